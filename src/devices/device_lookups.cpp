// SPDX-License-Identifier: Apache-2.0
#include "devices/device_lookups.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/radio.h"

namespace {

constexpr char PARENTAL[] = "vrop.parent.control";
constexpr char STATION[] = "vrop.laninfo.sta";
constexpr size_t SSID_MAX = 127;

int parental_switch(const char *mac, const char *name, const BusReplies &replies, LogSite site) {
    if (is_missing(mac, site)) return -1;
    json_object *device = replies.of_device(PARENTAL, mac);
    return device ? _json_get_int(device, name) : -1;
}

// A disconnection of that many seconds as the cloud counts it.
int disconnect_code(int disconnect, int seconds) {
    if (disconnect <= 0) return 0;
    switch (seconds) {
    case 600:
        return 2;
    case 1800:
        return 3;
    case 3600:
        return 4;
    default:
        return disconnect;
    }
}

} // namespace

int get_joinWay(const char *radio) {
    if (is_missing(radio)) return -1;
    static constexpr const char *RADIOS[] = {"0", "2.4G", "5G", "mesh"};
    for (int way = 0; way < 4; way++)
        if (strcmp(radio, RADIOS[way]) == 0) return way;
    return -1;
}

int get_guest_status(const char *ssid, const char *radio, const BusReplies &replies) {
    if (is_missing(ssid) || is_missing(radio)) return -1;
    const bool slow = strcmp(radio, "2.4G") == 0;
    if (!slow && strcmp(radio, "5G") != 0) {
        LOG("radio:%s is error", radio);
        return -1;
    }
    json_object *networks = replies.whole(slow ? "vrop.wifi.1.ap" : "vrop.wifi.2.ap", "list");
    if (!json_object_is_type(networks, json_type_array)) return -1;
    const char *guest = JsonGetStr(json_object_array_get_idx(networks, GUEST_INDEX), "ssid");
    return guest && std::string(guest, strnlen(guest, SSID_MAX)) == ssid ? 0 : -1;
}

int get_macFilter_status(const char *mac, const BusReplies &replies) {
    if (is_missing(mac)) return -1;
    json_object *entries = nullptr;
    JsonGetObj(replies.whole("vrop.firewall.filter", "get"), "macfilterLists", &entries);
    return element_of_mac(entries, mac) ? 0 : -1;
}

int get_devName(const char *mac, char *name, size_t size, const BusReplies &replies) {
    copy_text(name, size, "");
    if (is_missing(mac)) return -1;
    json_object *station = replies.of_device(STATION, mac);
    if (station == nullptr) return -1;
    const char *given = _json_get_str(station, "devname");
    copy_text(name, size, given[0] != '\0' ? given : _json_get_str(station, "hostname"));
    return 0;
}

int get_limitSpeed(const char *mac, int *up, int *down, int *limit_switch, const BusReplies &replies) {
    if (is_missing(mac)) return -1;
    json_object *station = replies.of_device(STATION, mac);
    if (!station) return -1;
    *up = _json_get_int(station, "usbandwidth");
    *down = _json_get_int(station, "dsbandwidth");
    *limit_switch = _json_get_int(station, "limitrateswitch");
    LOG("upSpeed:%d downSpeed:%d", *up, *down);
    return 0;
}

int judge_parentalControl(const char *mac, const BusReplies &replies) {
    if (is_missing(mac) || !replies.of_device(PARENTAL, mac)) return -1;
    LOG("parentcontrol list have the device");
    return 0;
}

int get_parentEnable(const char *mac, const BusReplies &replies) {
    return parental_switch(mac, "funcenable", replies, LogSite::here());
}

int get_parentUrlEnable(const char *mac, const BusReplies &replies) {
    return parental_switch(mac, "devurlenable", replies, LogSite::here());
}

int get_parentTimeEnable(const char *mac, const BusReplies &replies) {
    return parental_switch(mac, "devtimeenable", replies, LogSite::here());
}

int get_parentalControl_onlineTime(const char *mac, int *yesterday, int *today, int *week,
                                   const BusReplies &replies) {
    if (is_missing(mac)) return -1;
    json_object *devices = nullptr;
    JsonGetObj(replies.whole(PARENTAL, "list"), "device", &devices);
    json_object *device = element_of_mac(devices, mac);
    if (!device) return -1;
    *yesterday = *today = *week = 0; // a text that is missing counts as none
    for (auto [name, seconds] : {std::pair{"yesterday", yesterday}, {"today", today}, {"week", week}})
        if (const char *text = _json_get_str(device, name); text[0] != '\0') time_to_second(text, seconds);
    return 0;
}

int get_disconnectInfo(const char *mac, int *code, long *open_time, const BusReplies &replies) {
    if (is_missing(mac)) return -1;
    json_object *device = replies.of_device(PARENTAL, mac);
    if (!device) return -1;
    const int disconnect = _json_get_int(device, "disconnect");
    *code = disconnect_code(disconnect, _json_get_int(device, "disconnecttime"));
    *open_time = _json_get_int(device, "disconnectsettime");
    LOG("disconnect:%d disconnectsettime:%ld", disconnect, *open_time);
    return 0;
}

int time_to_second(const char *text, int *seconds) {
    if (is_missing(text)) return -1;
    unsigned days = 0, hours = 0, minutes = 0, rest = 0;
    sscanf(text, "%2u%2u%2u%2u", &days, &hours, &minutes, &rest);
    *seconds = static_cast<int>(days * 86400 + hours * 3600 + minutes * 60 + rest);
    return 0;
}
