// SPDX-License-Identifier: Apache-2.0
#include "core/storage_status.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "core/files.h"
#include "core/log.h"

namespace {

constexpr char STATUS_FILE[] = "/aptmp/ecm.status";
constexpr size_t STATUS_MAX = 128;

bool read_status(std::string *text, LogSite site) {
    if (!read_file(STATUS_FILE, STATUS_MAX, text)) {
        perror("fopen");
        LOG_AT(site, "open file:%s fail", STATUS_FILE);
        return false;
    }
    if (!text->empty()) return true;
    LOG_AT(site, "read file:%s fail", STATUS_FILE);
    return false;
}

// The digit behind the first "KEY=", whatever stands before that.
void take_digit(const std::string &text, const char *key, int *value) {
    const size_t at = text.find(key);
    if (at == std::string::npos || at + strlen(key) >= text.size()) return;
    const char digit = text[at + strlen(key)];
    if (digit >= '0' && digit <= '9') *value = digit - '0';
}

} // namespace

int get_natType(int *nat_type, int *upnp) {
    std::string text;
    if (!read_status(&text, LogSite::here())) return -1;
    take_digit(text, "upnp=", upnp);
    take_digit(text, "nat_type=", nat_type);
    return 0;
}

int get_ecm_status(int *connect_status) {
    std::string text;
    if (!read_status(&text, LogSite::here())) return -1;
    take_digit(text, "connect_status=", connect_status);
    return 0;
}
