// SPDX-License-Identifier: Apache-2.0
// The MAC filter: a block list, or an allow list.

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char SWITCH[] = "/vrop.firewall.filter/switch";
constexpr char ENTRIES[] = "/vrop.firewall.filter/macfilterLists";
constexpr std::size_t ENTRY_LIMIT = 64;

constexpr Field LIST = required(choice("filterOp", "black|white"));
constexpr Field TYPE = required(choice("filterType", "mac"));
constexpr Field PLATFORM = integer("platform", 0, 1);
constexpr Field SET[] = {required(flag("switch")), LIST};
constexpr Field ADD[] = {
    LIST, TYPE, required(flag("enable")), integer("protocol", 0, 2), required(mac("mac")), PLATFORM};
constexpr Field DELETE[] = {TYPE, required(integer("index", 0, 0x7fffffff)), PLATFORM};

// A MAC that is in the list, switched on or not, keeps its index and takes the new settings.
JsonRoot add_entry(World &world, const Request &request) {
    json_object *entries = world.state.at(ENTRIES);
    const int known = index_of_mac(entries, text_of(request.arguments, "mac"));
    if (known < 0 && length_of(entries) >= ENTRY_LIMIT) throw Refused("vrop.firewall.filter list is full");
    const auto at = known < 0 ? length_of(entries) : static_cast<std::size_t>(known);
    JsonRoot entry = copy_json(request.arguments);
    put(entry.get(), "mac", spell_mac(text_of(request.arguments, "mac")));
    put(entry.get(), "index",
        known < 0 ? next_number(entries, "index", 0) : integer_of(element(entries, at), "index"));
    json_object_array_put_idx(entries, at, entry.release());
    return result();
}

JsonRoot delete_entry(World &world, const Request &request) {
    json_object *entries = world.state.at(ENTRIES);
    int at = index_of(entries, "index", integer_of(request.arguments, "index"));
    if (at < 0) throw Refused("vrop.firewall.filter." + text_of(request.arguments, "index") + " not found");
    json_object_array_del_idx(entries, static_cast<std::size_t>(at), 1);
    return result();
}

JsonRoot set_switch(World &world, const Request &request) {
    world.state.set(SWITCH, integer_of(request.arguments, "switch"));
    world.state.set("/vrop.firewall.filter/filterOp", text_of(request.arguments, "filterOp"));
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.firewall.filter", "get", {}, show, "MAC filter: switch and macfilterLists"},
    {"vrop.firewall.filter", "filterSet", SET, set_switch, "switch it, as block list or as allow list"},
    {"vrop.firewall.filter", "filterAdd", ADD, add_entry, "the daemon gives a new entry its index"},
    {"vrop.firewall.filter", "filterDelete", DELETE, delete_entry, "delete the entry of that index"},
};

} // namespace

Methods filter_methods() {
    return ROWS;
}

bool is_filtered(const World &world, const std::string &mac) {
    if (world.state.integer(SWITCH) == 0) return false;
    json_object *entries = world.state.find(ENTRIES);
    const int at = index_of_mac(entries, mac);
    const bool listed = at >= 0 && integer_of(element(entries, static_cast<std::size_t>(at)), "enable", 1);
    return listed == (world.state.text("/vrop.firewall.filter/filterOp") != "white");
}

} // namespace router
