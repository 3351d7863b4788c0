// SPDX-License-Identifier: Apache-2.0
#include "properties/wifi_encryption.h"

#include <cstring>
#include <iterator>

#include "core/log.h"
#include "core/text.h"

namespace {

constexpr int DEFAULT_CODE = 3;

} // namespace

int get_report_encrytion(const char *authmode) {
    if (authmode == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    for (size_t code = 0; code < std::size(WIFI_AUTHMODES); ++code) {
        if (strcmp(authmode, WIFI_AUTHMODES[code]) == 0) return static_cast<int>(code);
    }
    LOG("use default encrytion");
    return DEFAULT_CODE;
}

int get_set_encrytion(int code, char *authmode, int size) {
    if (authmode == nullptr || size < 1) {
        LOG("param is NULL");
        return -1;
    }
    const bool known = code >= 0 && code < static_cast<int>(std::size(WIFI_AUTHMODES));
    copy_text(authmode, static_cast<size_t>(size), WIFI_AUTHMODES[known ? code : DEFAULT_CODE]);
    return 0;
}
