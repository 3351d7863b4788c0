// SPDX-License-Identifier: Apache-2.0
#include "https/helper_requests.h"

#include <cstdio>

#include "core/bus.h"
#include "core/clock.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/registration.h"
#include "core/text.h"
#include "https/signing.h"

namespace {

void load_identity(const char *object, RequestSender *sender) {
    JsonRoot root;
    json_object *info = get_dev_info(object, "get", &root);
    copy_text(sender->name, _json_get_str(info, "sn"));
    if (sender->name[0] == '\0') {
        char mac[32];
        copy_text(mac, _json_get_str(info, "mac"));
        copy_text(sender->name, mac_lower_hex(mac).text);
    }
    copy_text(sender->version, _json_get_str(info, "iswversion"));
}

int fill_body(const RequestBuffers &to, const RequestKind &kind, const RequestSender &sender, LogSite site) {
    JsonRoot body(json_object_new_object());
    if (!body) {
        LOG_AT(site, "create json obj fail");
        return HEAD_NO_OBJECT;
    }
    JsonSetStr(body.get(), nullptr, "sn", sender.name);
    JsonSetStr(body.get(), nullptr, "productKey", sender.registration.product_key);
    JsonSetInt64(body.get(), nullptr, "timestamp", sender.timestamp);
    int result = kind.add_members(body.get(), sender);
    if (result != HEAD_OK) return result;
    const char *text = json_object_to_json_string_ext(body.get(), JSON_C_TO_STRING_PLAIN);
    if (!text) {
        LOG_AT(site, "JsonObj To String fail");
        return HEAD_JSON_FAILED;
    }
    copy_text(to.body, static_cast<size_t>(to.body_size), text);
    return HEAD_OK;
}

int add_nothing(json_object *, const RequestSender &) {
    return HEAD_OK;
}

} // namespace

int sign_request(const char *identity_object, RequestSender *sender, char *sign, int sign_size,
                 LogSite site) {
    const register_config_record &registration = sender->registration;
    if (get_qvtkRegister_info(&sender->registration) != 0) {
        LOG_AT(site, "get sign fail");
        return HEAD_SIGN_FAILED;
    }
    load_identity(identity_object, sender);
    sender->timestamp = now_seconds();
    if (get_sign(registration.product_key, sender->name, registration.device_secret, sign, sign_size,
                 sender->timestamp) != 0) {
        LOG_AT(site, "get sign fail");
        return HEAD_SIGN_FAILED;
    }
    return HEAD_OK;
}

int build_request(const RequestBuffers &to, const RequestKind &kind, LogSite site) {
    if (!to.body || !to.sign || to.body_size <= 0 || to.sign_size <= 0) {
        LOG_AT(site, "param is error");
        return HEAD_BAD_ARGUMENT;
    }
    RequestSender sender;
    int result = sign_request(kind.identity_object, &sender, to.sign, to.sign_size, site);
    if (result != HEAD_OK) return result;
    if (to.url && to.url_size > 0)
        copy_text(to.url, static_cast<size_t>(to.url_size), sender.registration.*kind.address);
    return fill_body(to, kind, sender, site);
}

int post_timecontrol_head(char *body, char *sign, char *url, int body_size, int sign_size, int url_size) {
    return build_request({body, sign, url, body_size, sign_size, url_size},
                         {"vrop.devinfo", &register_config_record::time_url, add_nothing}, LogSite::here());
}
