// SPDX-License-Identifier: Apache-2.0
#include "services/url_file.h"

#include "core/files.h"

namespace {

std::mutex url_mutex;

} // namespace

UrlFile::UrlFile(const char *address, LogSite site) : turn(url_mutex) {
    write(address, site);
}

UrlFile::UrlFile(const char *address, LogSite site, std::try_to_lock_t) : turn(url_mutex, std::try_to_lock) {
    if (has_turn()) write(address, site);
}

void UrlFile::write(const char *address, LogSite site) {
    written = replace_file(URL_FILE, address, 0600);
    if (!written) LOG_AT(site, "fopen file:%s fail", URL_FILE);
}
