// SPDX-License-Identifier: Apache-2.0
#include "devices/runtime_file.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

#include "core/clock.h"
#include "core/files.h"
#include "core/json_path.h"
#include "core/text.h"

namespace {

constexpr mode_t RUNTIME_FILE_MODE = 0666;

std::mutex runtime_file_mutex; // held from the reading to the replacement

bool replace_locked(json_object *array) {
    return replace_file(RUNTIME_FILE, runtime_text(array), RUNTIME_FILE_MODE);
}

int64_t number_of(json_object *entry, const char *key, int64_t absent) {
    constexpr int64_t LIMIT = int64_t{1} << 60;
    json_object *member = nullptr;
    if (JsonGetObj(entry, key, &member) == 0) return absent;
    return std::clamp(json_object_get_int64(member), -LIMIT, LIMIT);
}

} // namespace

JsonRoot read_runtime_array(const char *path, bool *open_failed) {
    std::string text;
    *open_failed = !read_file(path, RUNTIME_TEXT_MAX + 1, &text);
    if (*open_failed) return nullptr;
    JsonRoot array(json_tokener_parse(text.c_str()));
    if (!json_object_is_type(array.get(), json_type_array)) return nullptr;
    return array;
}

std::string runtime_text(json_object *array) {
    std::string text = "[";
    for (size_t i = 0; i < json_object_array_length(array); i++) {
        json_object *entry = json_object_array_get_idx(array, i);
        const std::string next = (i > 0 ? "," : "") + (entry ? JsonPlainText(entry) : "null");
        if (text.size() + next.size() + 1 > RUNTIME_TEXT_MAX) break;
        text += next;
    }
    return text + "]";
}

RuntimeUpdate update_runtime_file(const RuntimeChange &change) {
    std::lock_guard lock(runtime_file_mutex);
    bool open_failed = false;
    JsonRoot entries = read_runtime_array(RUNTIME_FILE, &open_failed);
    if (open_failed) return RuntimeUpdate::no_file;
    if (!entries) return RuntimeUpdate::no_array;
    JsonRoot changed = change(entries.get());
    if (!changed) return RuntimeUpdate::kept;
    return replace_locked(changed.get()) ? RuntimeUpdate::replaced : RuntimeUpdate::failed;
}

bool write_runtime_file(json_object *array) {
    std::lock_guard lock(runtime_file_mutex);
    return replace_locked(array);
}

void remove_runtime_file() {
    std::lock_guard lock(runtime_file_mutex);
    unlink(RUNTIME_FILE);
}

void log_replacement(RuntimeUpdate result, LogSite site) {
    if (result == RuntimeUpdate::replaced) LOG_AT(site, "rename ok");
    if (result == RuntimeUpdate::failed) LOG_AT(site, "rename fail");
}

bool is_entry_of(json_object *entry, const char *mac) {
    const char *own = JsonGetStr(entry, "mac");
    if (!own) return false;
    bool any = false;
    for (;; own++, mac++, any = true) { // asked for every pair of a document's devices and the file's
        own += strspn(own, ":");
        mac += strspn(mac, ":");
        const bool small = *mac >= 'a' && *mac <= 'z';
        if (*own != (small ? *mac - 'a' + 'A' : *mac)) return false;
        if (*own == '\0') return any;
    }
}

int64_t entry_runtime(json_object *entry) {
    return number_of(entry, "runTime", 0);
}

int64_t entry_timestamp(json_object *entry) {
    return number_of(entry, "timestamp", now_seconds());
}
