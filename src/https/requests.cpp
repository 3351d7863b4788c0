// SPDX-License-Identifier: Apache-2.0
#include "https/requests.h"

#include <cstring>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/registration.h"
#include "core/text.h"
#include "https/signing.h"

upgrade_request_context upgrade_request;

namespace {

constexpr size_t SHORTEST_ADDRESS = 8; // what is shorter cannot name a server

template <size_t N>
void take_address(char (&address)[N], json_object *fota, const char *key, const char *fallback) {
    const char *given = _json_get_str(fota, key);
    copy_text(address, strlen(given) >= SHORTEST_ADDRESS ? given : fallback);
}

} // namespace

void load_upgrade_request() {
    JsonRoot root;
    json_object *fota = get_dev_info("vrop.fota", "get", &root);
    if (!fota) return;
    upgrade_request_context &context = upgrade_request;
    copy_text(context.sn, _json_get_str(fota, "sn"));
    copy_text(context.mac, _json_get_str(fota, "mac"));
    copy_text(context.manufacturer, _json_get_str(fota, "manufacturer"));
    copy_text(context.hardware_version, _json_get_str(fota, "hardware"));
    copy_text(context.firmware_version, _json_get_str(fota, "version"));
    copy_text(context.area_code, _json_get_str(fota, "province"));
    copy_text(context.product_key, _json_get_str(fota, "id"));
    copy_text(context.device_secret, _json_get_str(fota, "key"));
    take_address(context.check_url, fota, "checkaddr", DEFAULT_CHECK_UPGRADE_URL);
    take_address(context.progress_url, fota, "reportaddr", DEFAULT_UPGRADE_PROGRESS_URL);
}

int curl_post(const char *body, size_t length, ReplyBuffer *reply, const char *address, long timestamp) {
    if (!body) return CURLE_FAILED_INIT;
    LOG("#http upgrade# post_json:%s", body);
    LOG("#http upgrade# url:%s", address);
    char sign[128] = {};
    get_sign(upgrade_request.product_key, upgrade_request.sn, upgrade_request.device_secret, sign,
             sizeof sign, timestamp);
    LOG("#http upgrade# sign:%s", sign);

    Transfer transfer;
    if (!transfer) {
        LOG("#http upgrade# curl_easy_init error\n");
        return CURLE_FAILED_INIT;
    }
    CURLcode result = transfer.header("Content-Type: application/json")
                          .header(format_text<256>("sign: %s", sign).text)
                          .whole_limit(POST_SECONDS)
                          .url(address)
                          .take_headers()
                          .post(body, length)
                          .write_with(keep_last_piece, reply)
                          .trust()
                          .no_signals()
                          .perform();
    if (const char *why = transfer.distrust(result)) LOG("#http upgrade# server not verified: %s", why);
    if (result != CURLE_OK) LOG("#http upgrade# curl_easy_perform CURLcode=%d, post=%s\n", result, body);
    return result;
}
