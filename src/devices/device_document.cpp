// SPDX-License-Identifier: Apache-2.0
#include "devices/device_document.h"

#include <algorithm>
#include <strings.h>
#include <utility>

#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "devices/device_lookups.h"
#include "devices/online_notice.h"
#include "devices/parental_document.h"
#include "devices/station.h"

std::mutex apdevice_mutex;

namespace {

// What one document is built with.
struct Build {
    bool with_online_time;
    const BusReplies &replies;
    // As of the last device under parental control: those that are not under it repeat them.
    bool time_control = false;
    bool web_control = false;
};

// A station's member under the document's name, left out where the daemon leaves it out.
void copy_integer(json_object *station, const char *from, json_object *device, const char *to) {
    if (const int64_t value = JsonGetInt64(station, from); value != -1)
        JsonSetInt64(device, nullptr, to, value);
}

void copy_string(json_object *station, const char *from, json_object *device, const char *to) {
    if (const char *value = JsonGetStr(station, from)) JsonSetStr(device, nullptr, to, value);
}

void add_name(json_object *device, json_object *station) {
    if (!JsonGetStr(station, "devname")) return;
    char name[128];
    copy_text(name, station_name(station));
    JsonSetStr(device, nullptr, "name", name);
}

void add_link(json_object *device, json_object *station, const Build &build) {
    char radio[16];
    copy_text(radio, JsonGetStr(station, "radio"));
    LOG("radio:%s", radio);
    if (radio[0] == '\0') return;
    const int way = get_joinWay(radio);
    LOG("joinWay:%d", way);
    if (way != -1) JsonSetInt64(device, nullptr, "joinWay", way);
    if (way != 1 && way != 2) return;
    const bool guest = get_guest_status(JsonGetStr(station, "ssid"), radio, build.replies) == 0;
    JsonSetBool(device, nullptr, "guestEnable", guest);
}

void add_limit(json_object *device, json_object *station, const char *mac, const Build &build) {
    const int64_t limited = JsonGetInt64(station, "limitrateswitch");
    LOG("limitrateswitch:%d", static_cast<int>(limited));
    if (limited == -1) return;
    JsonSetBool(device, "limitSpeed", "open", limited != 0);
    int up = 0, down = 0, limit_switch = 0;
    if (limited == 0 || get_limitSpeed(mac, &up, &down, &limit_switch, build.replies) != 0) return;
    JsonSetInt64(device, "limitSpeed", "upSpeed", up);
    JsonSetInt64(device, "limitSpeed", "downSpeed", down);
}

void add_online_times(json_object *device, const char *mac, const Build &build) {
    int yesterday = 0, today = 0, week = 0;
    if (get_parentalControl_onlineTime(mac, &yesterday, &today, &week, build.replies) != 0) return;
    LOG("yesterday:%d today:%d week:%d", yesterday, today, week);
    JsonSetInt64(device, nullptr, "todayOnlineTime", today);
    JsonSetInt64(device, nullptr, "yesterdayOnlineTime", yesterday);
    JsonSetInt64(device, nullptr, "weekOnlineTime", week);
}

// False when the device cannot be completed.
bool add_parental(json_object *device, const char *mac, Build *build) {
    const bool supervised = judge_parentalControl(mac, build->replies) == 0;
    JsonSetInt64(device, nullptr, "parentFlag", supervised ? 1 : 0);
    if (supervised) {
        add_online_times(device, mac, *build);
        if (!add_parental_rules(device, mac, build->replies)) return false;
        build->time_control = get_parentTimeEnable(mac, build->replies) > 0;
        build->web_control = get_parentUrlEnable(mac, build->replies) > 0;
    }
    LOG("timeControlEnable:%d", build->time_control);
    JsonSetBool(device, nullptr, "timeControlEnable", build->time_control);
    LOG("webControlEnable:%d", build->web_control);
    JsonSetBool(device, nullptr, "webControlEnable", build->web_control);
    return true;
}

void add_notice_and_disconnection(json_object *device, const char *mac, const Build &build) {
    const int inform = get_device_inform(mac, build.replies);
    LOG("inform:%d", inform);
    JsonSetBool(device, nullptr, "onlineNotice", inform != 0);
    int code = 0;
    long open_time = 0;
    if (get_disconnectInfo(mac, &code, &open_time, build.replies) != 0) return;
    JsonSetInt64(device, nullptr, "disconnect", code);
    JsonSetInt64(device, nullptr, "disconnectOpenTime", open_time);
}

// False when the device cannot be completed.
bool fill_device(json_object *device, json_object *station, const char *mac, Build *build) {
    JsonSetStr(device, nullptr, "mac", mac);
    copy_string(station, "ipaddr", device, "ip");
    JsonSetBool(device, nullptr, "parentalEnable", get_parentEnable(mac, build->replies) > 0);
    add_name(device, station);
    copy_integer(station, "active", device, "onlineStatus");
    add_link(device, station, *build);
    LOG("macstr_report:%s", mac);
    JsonSetBool(device, nullptr, "blackEnable", get_macFilter_status(mac, build->replies) == 0);
    add_limit(device, station, mac, *build);
    if (build->with_online_time) copy_integer(station, "uptime", device, "onlineTime");
    if (!add_parental(device, mac, build)) return false;
    copy_string(station, "statype", device, "devType");
    add_notice_and_disconnection(device, mac, *build);
    return true;
}

// Adds the station's device to the list, unless it has no MAC.
void append_device(json_object *list, json_object *station, Build *build) {
    char mac[DEVICE_MAC_SIZE];
    copy_text(mac, JsonGetStr(station, "mac"));
    if (mac[0] == '\0') return;
    JsonRoot device(json_object_new_object());
    if (!device) {
        LOG("create json object fail");
        return;
    }
    if (fill_device(device.get(), station, mac, build)) JsonAppend(list, std::move(device));
}

// How many elements of an array count; 0 when it is none.
size_t bounded_length(json_object *array) {
    if (!json_object_is_type(array, json_type_array)) return 0;
    return std::min(json_object_array_length(array), MOST_DEVICES);
}

json_object *get_stations(const Build &build) {
    json_object *stations = build.replies.whole("vrop.laninfo", "list");
    const bool listed = json_object_is_type(stations, json_type_array);
    LOG("acount:%d", listed ? static_cast<int>(json_object_array_length(stations)) : 0);
    return stations;
}

json_object *station_of(json_object *stations, const char *mac) {
    for (size_t i = 0; mac && i < bounded_length(stations); i++) {
        json_object *station = json_object_array_get_idx(stations, i);
        const char *own = JsonGetStr(station, "mac");
        if (own && strcasecmp(own, mac) == 0) return station;
    }
    return nullptr;
}

JsonRoot new_list(LogSite site = LogSite::here()) {
    JsonRoot list(json_object_new_array());
    if (!list) LOG_AT(site, "create json array fail");
    return list;
}

} // namespace

json_object *get_apDevice_config(int mode) {
    std::lock_guard lock(apdevice_mutex);
    JsonRoot root(json_object_new_object());
    if (!root) {
        LOG("create json obj fail");
        return nullptr;
    }
    JsonRoot list = new_list();
    if (!list) return nullptr;
    const BusReplies replies;
    Build build = {.with_online_time = mode == DOCUMENT_PROPERTY || mode == DOCUMENT_TIMED,
                   .replies = replies};
    json_object *stations = get_stations(build);
    for (size_t i = 0; i < bounded_length(stations); i++)
        append_device(list.get(), json_object_array_get_idx(stations, i), &build);
    JsonSetObj(root.get(), nullptr, "apDevices", std::move(list));
    return root.release();
}

json_object *get_meshApDevice_config(json_object *stations) {
    if (!stations) {
        LOG("param is NULL");
        return nullptr;
    }
    std::lock_guard lock(apdevice_mutex);
    return get_meshApDevice_config(stations, {}).release();
}

JsonRoot get_meshApDevice_config(json_object *stations, const BusReplies &replies) {
    JsonRoot list = new_list();
    if (!list) return list;
    Build build = {.with_online_time = true, .replies = replies};
    json_object *own = get_stations(build);
    for (size_t i = 0; i < bounded_length(stations); i++)
        if (json_object *station = station_of(own, JsonGetStr(json_object_array_get_idx(stations, i), "mac")))
            append_device(list.get(), station, &build);
    return list;
}
