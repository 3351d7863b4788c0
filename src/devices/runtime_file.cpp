// SPDX-License-Identifier: Apache-2.0
#include "devices/runtime_file.h"

#include <cstring>

#include "core/files.h"
#include "core/json_path.h"
#include "core/text.h"

JsonRoot read_runtime_array(const char *path, bool *open_failed) {
    std::string text;
    *open_failed = !read_file(path, RUNTIME_TEXT_MAX + 1, &text);
    if (*open_failed) return nullptr;
    JsonRoot array(json_tokener_parse(text.c_str()));
    if (!json_object_is_type(array.get(), json_type_array)) return nullptr;
    return array;
}

std::string runtime_text(json_object *array) {
    return JsonPlainText(array, RUNTIME_TEXT_MAX);
}

void replace_runtime_file(json_object *array, LogSite site) {
    if (replace_file(RUNTIME_FILE, runtime_text(array), RUNTIME_FILE_MODE))
        LOG_AT(site, "rename ok");
    else
        LOG_AT(site, "rename fail");
}

bool is_entry_of(json_object *entry, const char *mac) {
    const char *own = JsonGetStr(entry, "mac");
    if (!own) return false;
    char capitals[32];
    copy_text(capitals, mac);
    lowercasestr_capitalstr(capitals);
    return strcmp(own, capitals) == 0;
}
