// SPDX-License-Identifier: Apache-2.0
#include "devices/runtime_list.h"

#include <cinttypes>
#include <utility>

#include "core/bus.h"
#include "core/clock.h"
#include "core/files.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "devices/runtime_clock.h"
#include "devices/runtime_file.h"
#include "devices/station.h"

namespace {

constexpr char DAY_FILE[] = "/aptmp/runTime_oneDay.log";
constexpr mode_t DAY_FILE_MODE = 0644;
constexpr size_t MOST_STATIONS = 128;
constexpr int64_t DAY = 86400;       // seconds
constexpr unsigned SETTLE_PAUSE = 2; // seconds for the daemon to finish its own list

// Runtimes are of one day: what exceeds it is taken to stem from the day before.
int64_t within_a_day(int64_t seconds) {
    return seconds > DAY ? seconds - DAY : seconds;
}

// Seconds until now from when the entry's runtime was taken.
int64_t seconds_since_taken(json_object *entry) {
    return now_seconds() - entry_timestamp(entry);
}

void add_station(json_object *log, json_object *station) {
    const char *mac = JsonGetStr(station, "mac");
    const int64_t uptime = JsonGetInt64(station, "uptime");
    if (!mac || mac[0] == '\0' || uptime == -1) return;
    char colon_mac[32];
    set_colon_mac(mac, colon_mac, sizeof colon_mac);
    JsonRoot entry(json_object_new_object());
    JsonSetStr(entry.get(), nullptr, "mac", colon_mac);
    JsonSetStr(entry.get(), nullptr, "name", station_name(station));
    JsonSetInt64(entry.get(), nullptr, "runTime", within_a_day(uptime));
    JsonSetInt64(entry.get(), nullptr, "timestamp", now_seconds());
    JsonSetInt64(entry.get(), nullptr, "onlineNotice", 1);
    JsonAppend(log, std::move(entry));
}

// The current clients as entries of the runtime file; null when there is no list.
JsonRoot get_apDevice_dayLog() {
    JsonRoot root;
    json_object *stations = get_station_array(&root);
    JsonRoot log(stations ? json_object_new_array() : nullptr);
    if (!log) return log;
    follow_clock();
    for (size_t i = 0; i < json_object_array_length(stations) && i < MOST_STATIONS; i++)
        add_station(log.get(), json_object_array_get_idx(stations, i));
    return log;
}

// An array of what `make` makes of each entry, which may be null; null without memory.
template <typename Make>
JsonRoot rebuild(json_object *entries, Make make) {
    JsonRoot array(json_object_new_array());
    if (!array) {
        LOG("create json array fail");
        return array;
    }
    for (size_t i = 0; i < json_object_array_length(entries); i++)
        JsonAppend(array.get(), make(json_object_array_get_idx(entries, i)));
    return array;
}

JsonRoot named_entry(json_object *old) {
    JsonRoot entry(json_object_is_type(old, json_type_object) ? json_object_new_object() : nullptr);
    if (!entry) {
        LOG("create json object fail");
        return entry;
    }
    JsonSetStr(entry.get(), nullptr, "mac", JsonGetStr(old, "mac"));
    JsonSetStr(entry.get(), nullptr, "name", JsonGetStr(old, "name"));
    return entry;
}

JsonRoot updated_entry(json_object *old, const char *gone_mac) {
    JsonRoot entry = named_entry(old);
    if (!entry) return entry;
    int64_t seconds = within_a_day(entry_runtime(old));
    if (is_entry_of(old, gone_mac)) {
        LOG("update runTime");
        seconds += seconds_since_taken(old);
        LOG("onlineTime:%" PRId64, seconds);
    }
    JsonSetInt64(entry.get(), nullptr, "runTime", seconds);
    JsonSetInt64(entry.get(), nullptr, "timestamp", entry_timestamp(old));
    if (json_object *notice = nullptr; JsonGetObj(old, "onlineNotice", &notice))
        JsonSetInt64(entry.get(), nullptr, "onlineNotice", json_object_get_int64(notice));
    return entry;
}

JsonRoot final_entry(json_object *old) {
    JsonRoot entry = named_entry(old);
    if (!entry) return entry;
    const int64_t seconds = entry_runtime(old) + seconds_since_taken(old);
    LOG("onlineTime:%" PRId64, seconds);
    JsonSetInt64(entry.get(), nullptr, "runTime", seconds);
    return entry;
}

void log_unread(const char *path, bool open_failed, LogSite site) {
    if (open_failed)
        LOG_AT(site, "open file:%s fail\n", path);
    else
        LOG_AT(site, "JsonStr Token fail");
}

JsonRoot report_entry(json_object *old) {
    if (!JsonGetStr(old, "mac")) return nullptr;
    JsonRoot entry = named_entry(old);
    if (entry) JsonSetInt64(entry.get(), nullptr, "runTime", entry_runtime(old));
    return entry;
}

JsonRoot read_logged(const char *path, LogSite site = LogSite::here()) {
    bool open_failed = false;
    JsonRoot entries = read_runtime_array(path, &open_failed);
    if (!entries) log_unread(path, open_failed, site);
    return entries;
}

} // namespace

void runtimeList_init() {
    LOG("enter runtimeList init");
    pause_seconds(SETTLE_PAUSE);
    JsonRoot log = get_apDevice_dayLog();
    if (!log) return;
    LOG("buf:%s", runtime_text(log.get()).c_str());
    if (!write_runtime_file(log.get())) LOG("open file:%s fail", RUNTIME_FILE);
}

void runtimeList_update(const char *mac) {
    follow_clock();
    const RuntimeUpdate result = update_runtime_file([mac](json_object *entries) {
        return rebuild(entries, [mac](json_object *old) { return updated_entry(old, mac); });
    });
    if (result == RuntimeUpdate::no_file || result == RuntimeUpdate::no_array)
        log_unread(RUNTIME_FILE, result == RuntimeUpdate::no_file, LogSite::here());
    log_replacement(result);
}

void runtimeList_finalUpdate(long) {
    follow_clock();
    JsonRoot entries = read_logged(RUNTIME_FILE);
    if (!entries) return;
    JsonRoot day = rebuild(entries.get(), final_entry);
    if (day && !replace_file(DAY_FILE, runtime_text(day.get()), DAY_FILE_MODE))
        LOG("open file:%s fail", DAY_FILE);
}

json_object *runtimeList_report() {
    JsonRoot entries = read_logged(DAY_FILE);
    return entries ? rebuild(entries.get(), report_entry).release() : nullptr;
}
