// SPDX-License-Identifier: Apache-2.0
#include "support/curl_spy.h"

#include <cstdarg>

#include <curl/curl.h>

static std::string text_of(CURLoption option, void *value) {
    if (option < CURLOPTTYPE_OBJECTPOINT) return std::to_string(reinterpret_cast<long>(value));
    if (!value) return "null";
    if (option == CURLOPT_URL || option == CURLOPT_POSTFIELDS) return static_cast<const char *>(value);
    if (option != CURLOPT_HTTPHEADER) return "set";
    std::string lines;
    for (auto *line = static_cast<const curl_slist *>(value); line; line = line->next)
        lines += std::string(line->data) + "|";
    return lines;
}

extern "C" {
CURL *__real_curl_easy_init();
CURLcode __real_curl_easy_setopt(CURL *handle, CURLoption option, ...);

CURL *__wrap_curl_easy_init() {
    return curl_spy.init_fails ? nullptr : __real_curl_easy_init();
}

CURLcode __wrap_curl_easy_setopt(CURL *handle, CURLoption option, ...) {
    va_list arguments;
    va_start(arguments, option);
    void *value = va_arg(arguments, void *); // numbers come the same way where they are as long as pointers
    va_end(arguments);
    curl_spy.options.push_back(curl_easy_option_by_id(option)->name + ("=" + text_of(option, value)));
    if (option == CURLOPT_TIMEOUT)
        if (auto limit = curl_spy.limits.find(reinterpret_cast<long>(value)); limit != curl_spy.limits.end())
            return __real_curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, limit->second);
    return __real_curl_easy_setopt(handle, option, value);
}
}
