// SPDX-License-Identifier: Apache-2.0
#include "properties/hcdn.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/storage_file.h"
#include "core/storage_status.h"
#include "core/text.h"
#include "properties/property.h"
#include "properties/restart.h"

namespace {

constexpr char OBJECT[] = "vrop.ecm";
constexpr int NOT_GIVEN = -1;
constexpr size_t LONGEST_PATH = 127;

std::mutex hcdn_lock;
char last_sent[1024];

// A switch of the settings file; the cloud may set those that say so.
struct Setting {
    const char *cloud, *file;
    int otherwise;
    bool settable;
};
constexpr Setting SETTINGS[] = {
    {"enable", "hcdn_enable", 1, false}, {"open", "hcdn_open", 0, true},        {"samba", "samba", 0, true},
    {"inMemory", "inmemoryop", 0, true}, {"outMemory", "outmemoryop", 0, true}, {"usb", "isusb", 1, false},
};

std::string disk_path() {
    JsonRoot root;
    json_object *storage = get_dev_info(OBJECT, "get", &root);
    if (storage == nullptr) LOG("get hcdn info fail");
    return _json_get_str(storage, "hcdnpath");
}

int fill_hcdn(json_object *document) {
    std::string text;
    read_storage(&text);
    for (const Setting &setting : SETTINGS)
        JsonSetBool(document, "hcdn", setting.cloud,
                    storage_number(text, setting.file, setting.otherwise) != 0);
    int nat_type = 0;
    int upnp = 0;
    int registered = 0;
    get_natType(&nat_type, &upnp);
    get_ecm_status(&registered);
    JsonSetStr(document, "hcdn", "path", disk_path().c_str());
    JsonSetInt64(document, "hcdn", "natType", nat_type);
    JsonSetBool(document, "hcdn", "upnp", upnp != 0);
    JsonSetBool(document, "hcdn", "registered", registered != 0);
    return 0;
}

const Property PROPERTY = {
    .name = "hcdn",
    .start = "hcdn ",
    .lock = &hcdn_lock,
    .fill = fill_hcdn,
    .create_failed = "create json obj fail",
    .changed = "hcdn have change buf:",
    .report_size = 1024,
    .last_sent = last_sent,
    .last_sent_size = sizeof(last_sent),
};

// A switch of the request: a boolean, 0 or 1; NOT_GIVEN when it is absent. False for anything else.
bool read_switch(json_object *request, const char *key, int *value) {
    *value = NOT_GIVEN;
    json_object *member = nullptr;
    if (JsonGetObj(request, key, &member) == 0) return true;
    const json_type type = json_object_get_type(member);
    if (type != json_type_boolean && type != json_type_int) return false;
    *value = json_object_get_int(member);
    return *value == 0 || *value == 1;
}

// The disk's path: whole, without steps upwards and without control characters; null when it is absent.
bool read_path(json_object *request, const char **path) {
    *path = nullptr;
    json_object *member = nullptr;
    if (JsonGetObj(request, "path", &member) == 0) return true;
    if (!json_object_is_type(member, json_type_string)) return false;
    *path = json_object_get_string(member);
    const std::string text(*path);
    const bool plain = std::none_of(text.begin(), text.end(),
                                    [](char each) { return static_cast<unsigned char>(each) < ' '; });
    return plain && text.size() <= LONGEST_PATH && text[0] == '/' &&
           (text + "/").find("/../") == std::string::npos &&
           text.size() == static_cast<size_t>(json_object_get_string_len(member));
}

// What a request makes of the file and of the daemon.
struct Change {
    std::string before, after;
    BusMessage message;
    bool any = false;
};

// False for a request that names nothing that can be set, or gives it a value that it cannot have. The text
// of the file stands in the change.
bool read_change(json_object *request, Change *change) {
    bool named = false;
    for (const Setting &setting : SETTINGS) {
        int value = NOT_GIVEN;
        if (!setting.settable) continue;
        if (!read_switch(request, setting.cloud, &value)) return false;
        if (value == NOT_GIVEN) continue;
        named = true;
        if (value == storage_number(change->after, setting.file, setting.otherwise)) continue;
        change->after = with_storage_number(change->after, setting.file, value);
        change->message.integer(setting.file, value);
        change->any = true;
    }
    const char *path = nullptr;
    if (!read_path(request, &path)) return false;
    if (path != nullptr && disk_path() != path) {
        change->message.text("hcdnpath", path);
        change->any = true;
    }
    return named || path != nullptr;
}

// Takes the file's change back; what came into it since stays.
void take_back(const Change &change) {
    std::string now;
    const bool readable = read_storage(&now);
    for (const Setting &setting : SETTINGS) {
        const int before = storage_number(change.before, setting.file, setting.otherwise);
        const int after = storage_number(change.after, setting.file, setting.otherwise);
        if (before != after && storage_number(now, setting.file, setting.otherwise) == after)
            now = with_storage_number(now, setting.file, before);
    }
    if (!readable || !replace_storage(now)) LOG("undo of file:%s fail", STORAGE_FILE);
}

int apply_hcdn(json_object *member, const char *context) {
    Change change;
    if (!read_storage(&change.before)) {
        LOG("read file:%s fail", STORAGE_FILE);
        return -1;
    }
    change.after = change.before;
    if (!read_change(member, &change)) {
        LOG("APP send data is error");
        return -1;
    }
    if (!change.any) return 0;
    const bool file_changes = change.after != change.before;
    if (file_changes && !replace_storage(change.after)) {
        LOG("open file:%s fail", STORAGE_FILE);
        return -1;
    }
    announce_restart(context);
    const int result = set_dev_info(OBJECT, "set", change.message);
    if (result == 0) return 0;
    LOG("set hcdn fail");
    if (file_changes) take_back(change);
    return result;
}

} // namespace

int hcdn_init() {
    return property_init(PROPERTY, nullptr);
}

int hcdn_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(PROPERTY, {context, value, reply, reply_length}, apply_hcdn);
}

int hcdn_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int hcdn_report() {
    return property_report(PROPERTY);
}
