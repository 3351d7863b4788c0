// SPDX-License-Identifier: Apache-2.0
#include "https/curl_spy.h"

#include <cstdarg>
#include <map>
#include <mutex>

#include <curl/curl.h>

namespace {

std::mutex mutex;
std::vector<std::string> seen;
long real_limit;
bool init_fails;

const std::map<CURLoption, const char *> NAMES = {
    {CURLOPT_TIMEOUT, "TIMEOUT"},
    {CURLOPT_CONNECTTIMEOUT, "CONNECTTIMEOUT"},
    {CURLOPT_URL, "URL"},
    {CURLOPT_HTTPHEADER, "HTTPHEADER"},
    {CURLOPT_POST, "POST"},
    {CURLOPT_POSTFIELDSIZE, "POSTFIELDSIZE"},
    {CURLOPT_POSTFIELDS, "POSTFIELDS"},
    {CURLOPT_WRITEFUNCTION, "WRITEFUNCTION"},
    {CURLOPT_WRITEDATA, "WRITEDATA"},
    {CURLOPT_SSL_VERIFYPEER, "SSL_VERIFYPEER"},
    {CURLOPT_SSL_VERIFYHOST, "SSL_VERIFYHOST"},
    {CURLOPT_NOPROGRESS, "NOPROGRESS"},
    {CURLOPT_NOSIGNAL, "NOSIGNAL"},
};

std::string list_text(const curl_slist *list) {
    std::string text;
    for (; list; list = list->next)
        text += std::string(text.empty() ? "" : "|") + list->data;
    return text;
}

std::string pointer_text(CURLoption option, void *value) {
    if (!value) return "null";
    if (option == CURLOPT_URL || option == CURLOPT_POSTFIELDS) return static_cast<const char *>(value);
    if (option == CURLOPT_HTTPHEADER) return list_text(static_cast<const curl_slist *>(value));
    return "set";
}

void remember(CURLoption option, const std::string &value) {
    auto name = NAMES.find(option);
    seen.push_back((name == NAMES.end() ? std::to_string(option) : name->second) + ("=" + value));
}

} // namespace

extern "C" {
CURL *__real_curl_easy_init();
CURLcode __real_curl_easy_setopt(CURL *handle, CURLoption option, ...);

CURL *__wrap_curl_easy_init() {
    std::lock_guard lock(mutex);
    return init_fails ? nullptr : __real_curl_easy_init();
}

CURLcode __wrap_curl_easy_setopt(CURL *handle, CURLoption option, ...) {
    std::lock_guard lock(mutex);
    va_list arguments;
    va_start(arguments, option);
    CURLcode result = CURLE_OK;
    if (option < CURLOPTTYPE_OBJECTPOINT) {
        long value = va_arg(arguments, long);
        remember(option, std::to_string(value));
        const bool changed = option == CURLOPT_TIMEOUT && real_limit > 0;
        result = changed ? __real_curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, real_limit)
                         : __real_curl_easy_setopt(handle, option, value);
    } else if (option >= CURLOPTTYPE_OFF_T && option < CURLOPTTYPE_BLOB) {
        curl_off_t value = va_arg(arguments, curl_off_t);
        remember(option, std::to_string(value));
        result = __real_curl_easy_setopt(handle, option, value);
    } else {
        void *value = va_arg(arguments, void *);
        remember(option, pointer_text(option, value));
        result = __real_curl_easy_setopt(handle, option, value);
    }
    va_end(arguments);
    return result;
}
}

namespace curl_spy {

std::vector<std::string> options() {
    std::lock_guard lock(mutex);
    return seen;
}

void clear() {
    std::lock_guard lock(mutex);
    seen.clear();
}

void limit_to(long millis) {
    std::lock_guard lock(mutex);
    real_limit = millis;
}

void fail_init(bool on) {
    std::lock_guard lock(mutex);
    init_fails = on;
}

} // namespace curl_spy
