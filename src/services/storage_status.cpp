// SPDX-License-Identifier: Apache-2.0
#include "services/storage_status.h"

#include <cstdio>
#include <string>

#include "core/files.h"
#include "core/log.h"

namespace {

constexpr size_t STATUS_BYTES = 128;

bool read_status(std::string *status, LogSite site = LogSite::here()) {
    if (!read_file(STORAGE_STATUS_FILE, STATUS_BYTES, status)) {
        perror("fopen");
        LOG_AT(site, "open file:%s fail", STORAGE_STATUS_FILE);
        return false;
    }
    if (status->empty()) LOG_AT(site, "read file:%s fail", STORAGE_STATUS_FILE);
    return !status->empty();
}

void read_digit(const std::string &status, const std::string &key, int *value) {
    const size_t at = status.find(key);
    if (at == std::string::npos || at + key.size() >= status.size()) return;
    const char digit = status[at + key.size()];
    if (digit >= '0' && digit <= '9') *value = digit - '0';
}

} // namespace

int get_natType(int *nat_type, int *upnp) {
    std::string status;
    if (!read_status(&status)) return -1;
    read_digit(status, "upnp=", upnp);
    read_digit(status, "nat_type=", nat_type);
    return 0;
}

int get_ecm_status(int *connect_status) {
    std::string status;
    if (!read_status(&status)) return -1;
    read_digit(status, "connect_status=", connect_status);
    return 0;
}
