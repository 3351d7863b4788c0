// SPDX-License-Identifier: Apache-2.0
// Parental control: the rules of each device, by address (or application) and by time.
#include <cstdlib>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char URL_RULES[] = "/vrop.parent.urlcontrol";
constexpr char TIME_RULES[] = "/vrop.parent.timecontrol";
constexpr std::size_t RULE_LIMIT = 64; // per device and kind
constexpr int ALL_URL_RULES = -2222;   // as an index: every rule of the device
constexpr int ALL_TIME_RULES = -1111;

constexpr Field DEVICE = required(steering(mac("mac")));
constexpr Field POLICY = required(steering(choice("filterType", "black|white")));
constexpr Field ADD_URL[] = {POLICY,
                             DEVICE,
                             required(flag("enable")),
                             required(text("url", 1, 255)),
                             text("appname", 0, 127),
                             integer("apptype", 0, 6)};
constexpr Field SET_URL[] = {POLICY, DEVICE, flag("enable"), text("url", 1, 255),
                             steering(integer("index", 0, 0x7fffffff))};
constexpr Field DELETE_URL[] = {required(integer("index", ALL_URL_RULES, 0x7fffffff)), DEVICE};
constexpr Field ADD_TIME[] = {required(flag("enable")), required(text("timestart", 4, 4)),
                              required(text("timeend", 4, 4)), DEVICE, required(text("week", 0, 7))};
constexpr Field DELETE_TIME[] = {required(integer("index", ALL_TIME_RULES, 0x7fffffff)), DEVICE};

std::string mac_of(const Request &request) {
    return text_of(request.arguments, "mac");
}

// The entry of the device; null when it has none.
json_object *find_entry(const World &world, const char *place, const std::string &mac) {
    json_object *entries = world.state.at(place);
    int at = index_of_mac(entries, mac);
    return at < 0 ? nullptr : element(entries, static_cast<std::size_t>(at));
}

// The entry of the device, made if it has none.
json_object *entry_of(World &world, const char *place, const std::string &mac) {
    if (json_object *entry = find_entry(world, place, mac)) return entry;
    JsonRoot entry = new_object();
    put(entry.get(), "mac", spell_mac(mac));
    put(entry.get(), "list", JsonRoot(json_object_new_array()));
    json_object_array_add(world.state.at(place), entry.release());
    return find_entry(world, place, mac);
}

void add_rule(json_object *entry, const Request &request) {
    json_object *rules = member(entry, "list");
    if (length_of(rules) >= RULE_LIMIT) throw Refused(std::string(request.row.object) + " list is full");
    JsonRoot rule = new_object();
    for (const Field &field : request.row.fields)
        if (json_object *value = member(request.arguments, field.name); value && field.stored)
            put(rule.get(), field.name, copy_json(value));
    put(rule.get(), "index", next_number(rules, "index", 0));
    json_object_array_add(rules, rule.release());
}

JsonRoot delete_rules(World &world, const Request &request, const char *place, int all) {
    json_object *entry = find_entry(world, place, mac_of(request));
    const int index = integer_of(request.arguments, "index");
    if (index == all) { // a device without rules has none left
        if (entry) put(entry, "list", JsonRoot(json_object_new_array()));
        return result();
    }
    json_object *rules = entry ? member(entry, "list") : nullptr;
    int at = index_of(rules, "index", index);
    if (at < 0) throw Refused(std::string(request.row.object) + "." + std::to_string(index) + " not found");
    json_object_array_del_idx(rules, static_cast<std::size_t>(at), 1);
    return result();
}

JsonRoot add_url_rule(World &world, const Request &request) {
    json_object *entry = entry_of(world, URL_RULES, mac_of(request));
    add_rule(entry, request);
    put(entry, "filterType", text_of(request.arguments, "filterType"));
    return result();
}

JsonRoot set_url_rule(World &world, const Request &request) {
    json_object *index = member(request.arguments, "index");
    json_object *entry = entry_of(world, URL_RULES, mac_of(request));
    if (index) {
        json_object *rules = member(entry, "list");
        int at = index_of(rules, "index", json_object_get_int(index));
        if (at < 0)
            throw Refused("vrop.parent.urlcontrol." + text_of(request.arguments, "index") + " not found");
        for (const char *name : {"enable", "url"})
            if (json_object *value = member(request.arguments, name))
                put(element(rules, static_cast<std::size_t>(at)), name, copy_json(value));
    }
    put(entry, "filterType", text_of(request.arguments, "filterType"));
    return result();
}

JsonRoot delete_url_rules(World &world, const Request &request) {
    return delete_rules(world, request, URL_RULES, ALL_URL_RULES);
}

JsonRoot add_time_rule(World &world, const Request &request) {
    add_rule(entry_of(world, TIME_RULES, mac_of(request)), request);
    return result();
}

JsonRoot delete_time_rules(World &world, const Request &request) {
    return delete_rules(world, request, TIME_RULES, ALL_TIME_RULES);
}

// "HHMM" in seconds after midnight.
int second_of(const std::string &time) {
    const int number = atoi(time.c_str());
    return number / 100 * 3600 + number % 100 * 60;
}

// A window that ends before it begins lasts into the next day.
bool is_within(json_object *rule, const WallTime &now) {
    const int start = second_of(text_of(rule, "timestart")), end = second_of(text_of(rule, "timeend"));
    const std::string week = text_of(rule, "week");
    const auto begins_on = [&week](int day) { return week.find(static_cast<char>('0' + day)) != week.npos; };
    if (start <= end) return begins_on(now.weekday) && start <= now.second && now.second < end;
    return (begins_on(now.weekday) && start <= now.second) ||
           (begins_on((now.weekday + 6) % 7) && now.second < end);
}

constexpr Method ROWS[] = {
    {"vrop.parent.urlcontrol", "list", {}, show, "address and application rules by device"},
    {"vrop.parent.urlcontrol", "add", ADD_URL, add_url_rule, "the daemon gives the rule its index"},
    {"vrop.parent.urlcontrol", "delete", DELETE_URL, delete_url_rules,
     "one rule; index -2222: all of the device"},
    {"vrop.parent.urlcontrol.modify", "set", SET_URL, set_url_rule,
     "a device's policy; with index, also that rule"},
    {"vrop.parent.timecontrol", "list", {}, show, "time rules by device; week holds day digits, 0 Sunday"},
    {"vrop.parent.timecontrol", "add", ADD_TIME, add_time_rule, "times as HHMM"},
    {"vrop.parent.timecontrol", "delete", DELETE_TIME, delete_time_rules,
     "one rule; index -1111: all of the device"},
};

} // namespace

Methods rule_methods() {
    return ROWS;
}

bool is_outside_windows(const World &world, const std::string &mac) {
    json_object *entry = find_entry(world, TIME_RULES, mac), *rules = entry ? member(entry, "list") : nullptr;
    const WallTime now = wall_time(world);
    bool has_window = false;
    for (std::size_t i = 0; i < length_of(rules); i++) {
        if (!integer_of(element(rules, i), "enable")) continue;
        if (is_within(element(rules, i), now)) return false;
        has_window = true;
    }
    return has_window;
}

} // namespace router
