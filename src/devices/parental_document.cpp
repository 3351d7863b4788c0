// SPDX-License-Identifier: Apache-2.0
#include "devices/parental_document.h"

#include <cstring>
#include <utility>

#include "core/json_path.h"
#include "core/log.h"
#include "devices/parental_formats.h"

namespace {

// The daemon's entry of the device's rules; null when it has none.
json_object *url_entry(const char *mac, const BusReplies &replies) {
    return element_of_mac(replies.whole("vrop.parent.urlcontrol", "list"), mac);
}

json_object *time_entry(const char *mac, const BusReplies &replies) {
    return element_of_mac(replies.whole("vrop.parent.timecontrol", "list"), mac);
}

// An array of what `make` makes of each rule that it does not pass over with null.
template <typename Make>
JsonRoot list_of(json_object *entry, Make make) {
    JsonRoot list(json_object_new_array());
    json_object *rules = nullptr;
    if (!list || JsonGetObj(entry, "list", &rules) == 0 || !json_object_is_type(rules, json_type_array))
        return list;
    for (size_t i = 0; i < json_object_array_length(rules); i++)
        JsonAppend(list.get(), make(json_object_array_get_idx(rules, i)));
    return list;
}

bool is_plain_url(json_object *rule) {
    return _json_get_int(rule, "apptype") <= 0 && JsonGetStr(rule, "url");
}

JsonRoot switched_text(json_object *rule, const char *name) {
    JsonRoot shown(json_object_new_object());
    JsonSetBool(shown.get(), nullptr, "open", _json_get_int(rule, "enable") != 0);
    JsonSetStr(shown.get(), nullptr, name, JsonGetStr(rule, name));
    return shown;
}

JsonRoot time_rule(json_object *rule) {
    JsonRoot shown(json_object_new_object()), days(json_object_new_array());
    if (!shown || !days) return nullptr;
    int32_t week[WEEK_DAYS] = {};
    get_report_week(_json_get_str(rule, "week"), week);
    for (const int32_t day : week)
        JsonAppend(days.get(), JsonRoot(json_object_new_int(day)));
    char frame[TIME_FRAME_SIZE] = ""; // stays so when the daemon's times are none
    join_timeFrame(_json_get_str(rule, "timestart"), _json_get_str(rule, "timeend"), frame);
    JsonSetStr(shown.get(), nullptr, "timeFrame", frame);
    JsonSetObj(shown.get(), nullptr, "daysOfWeek", std::move(days));
    JsonSetBool(shown.get(), nullptr, "open", _json_get_int(rule, "enable") != 0);
    return shown;
}

size_t length_of(const JsonRoot &list) {
    return list ? json_object_array_length(list.get()) : 0;
}

JsonRoot site_list(json_object *entry) {
    return list_of(entry, [](json_object *rule) {
        return JsonRoot(is_plain_url(rule) ? json_object_new_string(JsonGetStr(rule, "url")) : nullptr);
    });
}

JsonRoot url_list(json_object *entry) {
    return list_of(
        entry, [](json_object *rule) { return is_plain_url(rule) ? switched_text(rule, "url") : nullptr; });
}

JsonRoot app_list(json_object *entry, int apptype) {
    return list_of(entry, [apptype](json_object *rule) {
        return _json_get_int(rule, "apptype") == apptype ? switched_text(rule, "appname") : nullptr;
    });
}

void set_policy(json_object *control, json_object *entry) {
    const char *type = _json_get_str(entry, "filterType");
    LOG("controlPolicy:%s", type);
    if (strcmp(type, "black") == 0) JsonSetInt64(control, nullptr, "controlPolicy", 0);
    if (strcmp(type, "white") == 0) JsonSetInt64(control, nullptr, "controlPolicy", 1);
}

void add_web_list(json_object *control, const char *name, JsonRoot list, json_object *entry) {
    if (!list) LOG("parent URL list is NULL");
    if (length_of(list) == 0) return;
    JsonSetObj(control, nullptr, name, std::move(list));
    set_policy(control, entry);
}

void add_time_control(json_object *device, json_object *entry) {
    JsonRoot rules = list_of(entry, time_rule);
    LOG("time_cnt:%d", static_cast<int>(length_of(rules)));
    if (!rules) LOG("parent time list is NULL");
    if (length_of(rules) > 0) JsonSetObj(device, nullptr, "parentalTimeControl", std::move(rules));
}

bool add_web_control(json_object *device, json_object *entry) {
    JsonRoot control(json_object_new_object());
    if (!control) {
        LOG("create parentalWebControl object fail");
        return false;
    }
    JsonRoot urls = url_list(entry);
    LOG("url_cnt:%d", static_cast<int>(length_of(urls)));
    add_web_list(control.get(), "sites", site_list(entry), entry);
    add_web_list(control.get(), "urls", std::move(urls), entry);
    if (json_object_object_length(control.get()) > 0)
        JsonSetObj(device, nullptr, "parentalWebControl", std::move(control));
    return true;
}

bool add_app_control(json_object *device, const AppKind &kind, json_object *entry) {
    JsonRoot control(json_object_new_object());
    JsonRoot rules = app_list(entry, kind.apptype);
    if (!control || !rules) {
        LOG("create %s object fail", kind.key);
        return false;
    }
    JsonSetObj(control.get(), nullptr, "urls", std::move(rules));
    return JsonSetObj(device, nullptr, kind.key, std::move(control)) == 1;
}

} // namespace

JsonRoot get_parentalTimeList(const char *mac, const BusReplies &replies) {
    return is_missing(mac) ? nullptr : list_of(time_entry(mac, replies), time_rule);
}

JsonRoot get_parentalWebList(const char *mac, const BusReplies &replies) {
    return is_missing(mac) ? nullptr : site_list(url_entry(mac, replies));
}

JsonRoot get_parentalNewWebList(const char *mac, const BusReplies &replies) {
    return is_missing(mac) ? nullptr : url_list(url_entry(mac, replies));
}

JsonRoot get_app_controllist(const char *mac, int apptype, const BusReplies &replies) {
    return is_missing(mac) ? nullptr : app_list(url_entry(mac, replies), apptype);
}

bool add_parental_rules(json_object *device, const char *mac, const BusReplies &replies) {
    add_time_control(device, time_entry(mac, replies));
    json_object *rules = url_entry(mac, replies);
    if (!add_web_control(device, rules)) return false;
    for (const AppKind &kind : APP_KINDS)
        if (!add_app_control(device, kind, rules)) return false;
    return true;
}
