// SPDX-License-Identifier: Apache-2.0
#include "devices/parental_writes.h"

#include <cstring>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "devices/bus_replies.h"
#include "devices/device_lookups.h"

namespace {

constexpr char DEVICES[] = "vrop.parent.control";
constexpr char URL_RULES[] = "vrop.parent.urlcontrol";
constexpr char TIME_RULES[] = "vrop.parent.timecontrol";

// The daemon's markers for all rules of a device; they differ from list to list.
constexpr int32_t ALL_URL_RULES = -2222;
constexpr int32_t ALL_TIME_RULES = -1111;

bool is_wrong(const char *mac, LogSite site = LogSite::here()) {
    if (mac != nullptr && mac[0] != '\0') return false;
    LOG_AT(site, "param is error");
    return true;
}

// The same of a MAC that comes with something else, which must not be null.
bool is_wrong(const char *mac, const void *other, LogSite site = LogSite::here()) {
    return is_wrong(other != nullptr ? mac : nullptr, site);
}

const char *policy_text(int32_t policy, LogSite site = LogSite::here()) {
    if (policy == BLACK) return "black";
    if (policy == WHITE) return "white";
    LOG_AT(site, "param is error");
    return nullptr;
}

int clear_rules(const char *object, int32_t marker, const char *mac) {
    BusMessage message;
    message.integer("index", marker).text("mac", mac);
    return set_dev_info(object, "delete", message);
}

int set_switch(const char *mac, const char *name, const char *member, int32_t value,
               LogSite site = LogSite::here()) {
    if (is_wrong(mac, name, site)) return -1;
    BusMessage message;
    message.text("mac", mac).text("hostname", name).integer(member, value);
    return set_dev_info(DEVICES, "setdev", message);
}

void log_app_rule(const char *mac, const AppRule &rule, LogSite site = LogSite::here()) {
    LOG_AT(site, "mac:%s enable:%d url:%s apptype:%d", mac, rule.open, rule.url.c_str(), rule.apptype);
}

int log_url_result(int result, const char *url, LogSite site = LogSite::here()) {
    if (result != 0) LOG_AT(site, "control url:%s fail", url);
    return result;
}

// The device's rule that fits, with index and switch; null when there is none. Borrowed from the replies.
template <typename Fits>
json_object *find_rule(const BusReplies &replies, const char *mac, int32_t *index, int32_t *enable,
                       Fits fits) {
    json_object *rules = nullptr;
    JsonGetObj(element_of_mac(replies.whole(URL_RULES, "list"), mac), "list", &rules);
    const size_t count = json_object_is_type(rules, json_type_array) ? json_object_array_length(rules) : 0;
    for (size_t i = 0; i < count; i++) {
        json_object *rule = json_object_array_get_idx(rules, i);
        if (!fits(rule)) continue;
        *index = _json_get_int(rule, "index");
        *enable = _json_get_int(rule, "enable");
        return rule;
    }
    return nullptr;
}

} // namespace

int start_parentalControl() {
    BusMessage message;
    message.integer("enable", 1);
    return set_dev_info(DEVICES, "setenable", message);
}

int add_parentalControl(const char *mac, const char *name) {
    if (is_wrong(mac, name)) return -1;
    BusMessage message;
    message.text("mac", mac).text("hostname", name);
    return set_dev_info(DEVICES, "add", message);
}

int clear_parentControl(const char *mac) {
    if (is_wrong(mac)) return -1;
    BusMessage message;
    message.integer("delall", 0).text("mac", mac);
    const int result = set_dev_info(DEVICES, "delete", message);
    if (result != 0) LOG("delete parentControl mac:%s fail", mac);
    return result;
}

int clear_parentUrlControl(const char *mac) {
    if (is_wrong(mac)) return -1;
    const int result = clear_rules(URL_RULES, ALL_URL_RULES, mac);
    if (result != 0) LOG("delete parenturlcontrol mac:%s fail", mac);
    return result;
}

int clear_parentTimeControl(const char *mac) {
    if (is_wrong(mac)) return -1;
    const int result = clear_rules(TIME_RULES, ALL_TIME_RULES, mac);
    if (result != 0) LOG("delete parenttimecontrol mac:%s fail", mac);
    return result;
}

int set_parentEnable(const char *mac, const char *name, int32_t value) {
    return set_switch(mac, name, "funcenable", value);
}

int set_parentUrlEnable(const char *mac, const char *name, int32_t value) {
    return set_switch(mac, name, "devurlenable", value);
}

int set_parentTimeEnable(const char *mac, const char *name, int32_t value) {
    return set_switch(mac, name, "devtimeenable", value);
}

int set_parent_enable(const char *mac, const char *name, int32_t parental_enable, int32_t time_control_enable,
                      int32_t web_control_enable, bool announced) {
    if (is_wrong(mac, name)) return -1;
    const struct {
        const char *name;
        int32_t wanted;
        int (*read)(const char *mac, const BusReplies &replies);
        int (*write)(const char *mac, const char *name, int32_t value);
    } switches[] = {{"parentalEnable", parental_enable, get_parentEnable, set_parentEnable},
                    {"webControlEnable", web_control_enable, get_parentUrlEnable, set_parentUrlEnable},
                    {"timeControlEnable", time_control_enable, get_parentTimeEnable, set_parentTimeEnable}};
    const BusReplies present;
    int result = 0;
    for (const auto &one : switches) {
        if (one.wanted == -1 || one.wanted == one.read(mac, present)) continue;
        if (announced) LOG("start set %s", one.name);
        if (one.write(mac, name, one.wanted) == 0) continue;
        LOG("set %s fail", one.name);
        result = -1;
    }
    return result;
}

int set_url_filterType(const char *mac, int32_t policy) {
    LOG("controlPolicy:%d", policy);
    const char *type = policy_text(policy);
    if (type == nullptr || is_wrong(mac)) return -1;
    BusMessage message;
    message.text("filterType", type).text("mac", mac);
    const int result = set_dev_info("vrop.parent.urlcontrol.modify", "set", message);
    if (result != 0) LOG("control filterType:%d fail", policy);
    return result;
}

int add_one_parentalWebControl(const char *mac, int32_t enable, const char *url, int32_t policy) {
    if (is_wrong(mac, url)) return -1;
    LOG("mac:%s enable:%d url:%s controlPolicy:%d", mac, enable, url, policy);
    const char *type = policy_text(policy);
    if (type == nullptr) return -1;
    BusMessage message;
    message.text("filterType", type).text("mac", mac).integer("enable", enable).text("url", url);
    return log_url_result(set_dev_info(URL_RULES, "add", message), url);
}

int add_one_parent_appcontrol(const char *mac, const AppRule *rule) {
    if (is_wrong(mac, rule)) return -1;
    log_app_rule(mac, *rule);
    BusMessage message;
    message.text("filterType", "black").text("mac", mac).integer("enable", rule->open);
    message.text("url", rule->url.c_str()).text("appname", rule->appname.c_str());
    message.integer("apptype", rule->apptype);
    return log_url_result(set_dev_info(URL_RULES, "add", message), rule->url.c_str());
}

int set_one_parent_appcontrol(const char *mac, const AppRule *rule, int32_t index) {
    if (is_wrong(mac, rule)) return -1;
    log_app_rule(mac, *rule);
    BusMessage message;
    message.text("filterType", "black").text("mac", mac).integer("enable", rule->open);
    message.text("url", rule->url.c_str()).integer("index", index);
    return log_url_result(set_dev_info("vrop.parent.urlcontrol.modify", "set", message), rule->url.c_str());
}

int add_one_parentalTimeControl(const char *mac, const TimeRule *rule) {
    if (is_wrong(mac, rule)) return -1;
    LOG("timeFrame:%s", rule->timeFrame);
    char start[DAY_TIME_SIZE], end[DAY_TIME_SIZE], week[WEEK_TEXT_SIZE];
    if (cut_timeFrame(rule->timeFrame, start, end) != 0 || delete_str_colon(start, start) != 0 ||
        delete_str_colon(end, end) != 0) {
        LOG("cut timeFrame:%s fail", rule->timeFrame);
        return -1;
    }
    change_week(rule->daysOfWeek, week, sizeof week);
    LOG("buf:%s", week);
    BusMessage message;
    message.integer("enable", rule->open).text("timestart", start).text("timeend", end);
    message.text("mac", mac).text("week", week);
    const int result = set_dev_info(TIME_RULES, "add", message);
    if (result != 0) LOG("parent time:%s control fail", rule->timeFrame);
    return result;
}

int find_url_exist_controllist(const char *mac, const char *url, int32_t *index, int32_t *enable) {
    if (is_wrong(mac, url)) return -1;
    const BusReplies replies;
    return find_rule(replies, mac, index, enable,
                     [url](json_object *rule) { return strcmp(_json_get_str(rule, "url"), url) == 0; }) !=
                   nullptr
               ? 0
               : -1;
}

int find_app_exist_controllist(const char *mac, AppRule *rule, int32_t *index, int32_t *enable) {
    if (is_wrong(mac, rule)) return -1;
    const BusReplies replies;
    json_object *found = find_rule(replies, mac, index, enable, [rule](json_object *known) {
        return _json_get_int(known, "apptype") == rule->apptype &&
               rule->appname == _json_get_str(known, "appname");
    });
    if (found == nullptr) return -1;
    rule->url = _json_get_str(found, "url");
    return 0;
}
