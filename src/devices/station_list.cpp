// SPDX-License-Identifier: Apache-2.0
#include "devices/station_list.h"

#include <cstring>
#include <utility>

#include "core/clock.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "devices/online_notice.h"
#include "devices/runtime.h"
#include "devices/runtime_list.h"
#include "devices/station.h"

namespace {

constexpr unsigned CHANGE_PAUSE = 2; // seconds after each client that came or went

// The list of the previous poll, as text; a list that does not fit is cut and can then not be read.
char staList_backup[2048];
size_t staList_len;

struct Station {
    char mac[32];
    char name[128];
};

void add_station(json_object *list, json_object *listed) {
    const char *mac = JsonGetStr(listed, "mac");
    const int64_t uptime = JsonGetInt64(listed, "uptime");
    if (!mac || mac[0] == '\0' || uptime == -1) return;
    Station station;
    copy_text(station.mac, mac);
    copy_text(station.name, station_name(listed));
    JsonRoot element(json_object_new_object());
    JsonSetStr(element.get(), nullptr, "mac", station.mac);
    JsonSetStr(element.get(), nullptr, "ip", JsonGetStr(listed, "ipaddr"));
    JsonSetStr(element.get(), nullptr, "name", station.name);
    JsonSetInt64(element.get(), nullptr, "onlineTime", uptime);
    JsonAppend(list, std::move(element));
}

JsonRoot get_staList_config() {
    JsonRoot root;
    json_object *stations = get_station_array(&root);
    JsonRoot list(stations ? json_object_new_array() : nullptr);
    if (!list) return list;
    for (size_t i = 0; i < json_object_array_length(stations); i++)
        add_station(list.get(), json_object_array_get_idx(stations, i));
    return list;
}

// Element `number`, counted from 1; empty texts when there is none.
Station get_staMac(json_object *list, size_t number) {
    json_object *element = json_object_array_get_idx(list, number - 1);
    Station station;
    copy_text(station.mac, JsonGetStr(element, "mac"));
    copy_text(station.name, JsonGetStr(element, "name"));
    return station;
}

// 0 when the list holds the MAC, spelled alike, 1 when not, -1 when there is no list.
int find_sameDevice(json_object *list, const char *mac) {
    if (!json_object_is_type(list, json_type_array)) return -1;
    for (size_t i = 0; i < json_object_array_length(list); i++) {
        const char *own = JsonGetStr(json_object_array_get_idx(list, i), "mac");
        if (own && strcmp(own, mac) == 0) return 0;
    }
    return 1;
}

void update_backupSta(json_object *list) {
    staList_len = json_object_array_length(list);
    copy_text(staList_backup, JsonPlainText(list).c_str());
}

// True when one came. Announces the last first.
bool announce_arrivals(json_object *list, json_object *backup) {
    bool changed = false;
    for (size_t number = json_object_array_length(list); number >= 1; number--) {
        Station station = get_staMac(list, number);
        if (find_sameDevice(backup, station.mac) != 1) continue;
        if (get_device_inform(station.mac) != 0) online_report(station.mac, station.name);
        changed = true;
        pause_seconds(CHANGE_PAUSE);
    }
    return changed;
}

// True when one went. Closes the last first.
bool close_departures(json_object *list, json_object *backup) {
    bool changed = false;
    for (size_t number = staList_len; number >= 1; number--) {
        Station station = get_staMac(backup, number);
        if (find_sameDevice(list, station.mac) != 1) continue;
        runtimeList_update(station.mac);
        changed = true;
        pause_seconds(CHANGE_PAUSE);
    }
    return changed;
}

} // namespace

int check_staList() {
    JsonRoot list = get_staList_config();
    if (!list) return 0;
    if (staList_backup[0] == '\0') {
        update_backupSta(list.get());
        runtimeList_init();
        return 0;
    }
    JsonRoot backup(json_tokener_parse(staList_backup));
    if (announce_arrivals(list.get(), backup.get())) {
        update_backupSta(list.get());
        runtimeList_init();
        return 0;
    }
    if (!json_object_is_type(backup.get(), json_type_array)) {
        LOG("get backup obj fail");
        return -1;
    }
    if (close_departures(list.get(), backup.get())) update_backupSta(list.get());
    return 0;
}

void clear_backupSta() {
    LOG("start clear backup buffer");
    staList_backup[0] = '\0';
    staList_len = 0;
}
