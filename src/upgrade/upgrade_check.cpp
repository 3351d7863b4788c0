// SPDX-License-Identifier: Apache-2.0
// Asks the device-management server for new firmware, and tells it how far an upgrade got.
#include <cinttypes>
#include <string>

#include "core/clock.h"
#include "core/handles.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "https/requests.h"
#include "upgrade/https_upgrade.h"
#include "upgrade/retries.h"

namespace {

constexpr unsigned RETRY_PAUSES[] = {5, 10, 15}; // seconds, before each retry
constexpr int CHECK_TYPE = 2;
constexpr size_t CHECK_REPLY = 2048;
constexpr size_t PROGRESS_REPLY = 1024;

JsonRoot new_body(long timestamp, LogSite site = LogSite::here()) {
    JsonRoot body(json_object_new_object());
    if (!body) {
        LOG_AT(site, "#http upgrade# make new json obj error");
        return body;
    }
    JsonSetStr(body.get(), nullptr, "productKey", upgrade_request.product_key);
    JsonSetStr(body.get(), nullptr, "sn", upgrade_request.sn);
    JsonSetInt64(body.get(), nullptr, "timestamp", timestamp);
    return body;
}

JsonRoot check_body(long timestamp, LogSite site = LogSite::here()) {
    JsonRoot body = new_body(timestamp, site);
    if (!body) return body;
    JsonSetStr(body.get(), nullptr, "mac", upgrade_request.mac);
    JsonSetInt64(body.get(), nullptr, "checkType", CHECK_TYPE);
    JsonSetStr(body.get(), nullptr, "manufacturer", upgrade_request.manufacturer);
    JsonSetStr(body.get(), nullptr, "hardwareVersion", upgrade_request.hardware_version);
    JsonSetStr(body.get(), nullptr, "firmwareVersion", upgrade_request.firmware_version);
    JsonSetStr(body.get(), nullptr, "areaCode", upgrade_request.area_code);
    return body;
}

void say(const char *line, LogSite site) {
    LOG_AT(site, "%s", line);
}

int64_t take_number(json_object *data, const char *key, LogSite site) {
    int64_t value = JsonGetInt64(data, key);
    LOG_AT(site, "#http upgrade# response %s[%" PRId64 "]\n", key, value);
    return value;
}

template <size_t N>
void take_text(char (&to)[N], json_object *data, const char *key, LogSite site) {
    copy_text(to, JsonGetStr(data, key));
    LOG_AT(site, "#http upgrade# response %s[%s]\n", key, to);
}

void take_response(json_object *reply, LogSite site = LogSite::here()) {
    upgrade_request_context::response_fields &response = upgrade_request.response;
    response = {};
    json_object *data = nullptr;
    if (!JsonGetObj(reply, "data", &data) || !json_object_is_type(data, json_type_object)) return;
    response.id = take_number(data, "id", site);
    response.size = take_number(data, "size", site);
    take_text(response.version, data, "version", site);
    take_text(response.md5, data, "md5", site);
    take_text(response.description, data, "description", site);
    take_text(response.strategy, data, "strategy", site);
    take_text(response.firmware_name, data, "firmwareName", site);
    take_text(response.url, data, "url", site);
}

} // namespace

int query_upgrade() {
    const long timestamp = now_seconds();
    JsonRoot body = check_body(timestamp);
    if (!body) return -1;
    char text[CHECK_REPLY] = {};
    ReplyBuffer reply = {text, sizeof text};
    const std::string sent = JsonPlainText(body.get());
    int result = with_retries({"curl_post", RETRY_PAUSES, say}, [&] {
        return curl_post(sent.c_str(), sent.size(), &reply, upgrade_request.check_url, timestamp);
    });
    if (result != 0) return result;

    LOG("#http upgrade# response:%s\n", text);
    JsonRoot document(json_tokener_parse(text));
    if (!document) {
        LOG("#http upgrade# string parse to json error");
        return -1;
    }
    int32_t code = -1;
    JsonReadInt(document.get(), "code", &code);
    LOG("#http upgrade# response code:%d", code);
    if (code == 0) take_response(document.get());
    return code;
}

void report_upgrade_progress(int progress, const char *reason) {
    const long timestamp = now_seconds();
    JsonRoot body = new_body(timestamp);
    if (!body) return;
    JsonSetStr(body.get(), nullptr, "strategy", upgrade_request.response.strategy);
    JsonSetInt64(body.get(), nullptr, "progress", progress);
    JsonSetStr(body.get(), nullptr, "oldVersion", upgrade_request.firmware_version);
    JsonSetStr(body.get(), nullptr, "newVersion", upgrade_request.response.version);
    JsonSetStr(body.get(), nullptr, "reason", reason);
    LOG_UPGRADE("report_upgrade_progress progress[%d], reason[%s]", progress, reason);

    const std::string sent = JsonPlainText(body.get());
    char text[PROGRESS_REPLY] = {};
    ReplyBuffer reply = {text, sizeof text};
    int result = curl_post(sent.c_str(), sent.size(), &reply, upgrade_request.progress_url, timestamp);
    if (result == 0 && JsonRoot(json_tokener_parse(text))) return; // whatever its "code"
    if (result == 0) LOG("#http upgrade# string parse to json error");
    LOG("#http upgrade# curl_post error:ret = %d", result);
    LOG_UPGRADE("#http upgrade# curl_post error:ret = %d", result);
}
