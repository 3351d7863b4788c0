// SPDX-License-Identifier: Apache-2.0
#include "devices/online_notice.h"

#include <utility>

#include "core/json_path.h"
#include "core/log.h"
#include "devices/runtime_file.h"

namespace {

constexpr int ANNOUNCE = 1;

int notice_of(json_object *entry) {
    json_object *notice = nullptr;
    return JsonGetObj(entry, "onlineNotice", &notice) ? json_object_get_int(notice) : ANNOUNCE;
}

// What is kept of an entry, untouched.
constexpr const char *KEPT[] = {"mac", "name", "runTime", "timestamp", "onlineNotice"};

JsonRoot kept_entry(json_object *old) {
    JsonRoot entry(json_object_new_object());
    json_object *value = nullptr;
    for (const char *name : KEPT)
        if (entry && JsonGetObj(old, name, &value))
            json_object_object_add(entry.get(), name, json_object_get(value));
    return entry;
}

// The entries with the client's notice changed; null, which leaves the file alone, when that cannot be
// written whole.
JsonRoot with_notice(json_object *entries, const char *mac, int value) {
    JsonRoot changed(json_object_new_array());
    if (!changed) {
        LOG("create json array fail");
        return nullptr;
    }
    for (size_t i = 0; i < json_object_array_length(entries); i++) {
        json_object *old = json_object_array_get_idx(entries, i);
        JsonRoot entry(json_object_is_type(old, json_type_object) ? kept_entry(old) : nullptr);
        if (!entry) continue;
        if (is_entry_of(old, mac)) JsonSetInt64(entry.get(), nullptr, "onlineNotice", value);
        JsonAppend(changed.get(), std::move(entry));
    }
    if (JsonPlainText(changed.get()).size() <= RUNTIME_TEXT_MAX) return changed;
    LOG("the runtime file has no room");
    return nullptr;
}

} // namespace

int update_onlineNotice(const char *mac, int value) {
    if (is_missing(mac)) return -1;
    const RuntimeUpdate result =
        update_runtime_file([mac, value](json_object *entries) { return with_notice(entries, mac, value); });
    if (result == RuntimeUpdate::no_file) LOG("open file:%s fail", RUNTIME_FILE);
    log_replacement(result);
    return result == RuntimeUpdate::replaced ? 0 : -1;
}

int get_device_inform(const char *mac, const BusReplies &replies) {
    if (is_missing(mac)) return -1;
    json_object *list = replies.runtimes();
    const size_t count = list ? json_object_array_length(list) : 0;
    for (size_t i = 0; i < count; i++) {
        json_object *entry = json_object_array_get_idx(list, i);
        if (is_entry_of(entry, mac)) return notice_of(entry);
    }
    return ANNOUNCE;
}
