// SPDX-License-Identifier: Apache-2.0
#include "binding/sdk_record.h"

#include "binding/tables.h"
#include "core/bus.h"
#include "core/global_config.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/registration.h"
#include "core/text.h"
#include "upgrade/sdk_upgrade.h"
#include "upgrade/upgrade_report.h"

struct other_handle_table g_other_handle;

namespace {

constexpr int32_t SDK_INTERVAL = 300; // what it counts is the SDK's affair

const char *first_of(const char *text, const char *fallback) {
    return text[0] != '\0' ? text : fallback;
}

const char *or_empty(const char *text) {
    return text == nullptr ? "" : text;
}

void fill_identity(json_object *info) {
    const char *digits = _json_get_str(info, "mac");
    Text<13> lower_mac = {};
    if (digits[0] != '\0') {
        set_colon_mac(digits, global_config.mac, sizeof global_config.mac);
        lower_mac = mac_lower_hex(digits);
    }
    LOG("mac:%s", global_config.mac);
    copy_text(global_config.serial_number, first_of(_json_get_str(info, "sn"), lower_mac.text));
    LOG("sn:%s", global_config.serial_number);
    copy_text(global_config.software_version, _json_get_str(info, "iswversion"));
    LOG("iswversion:%s", global_config.software_version);
    copy_text(global_config.hardware_version,
              first_of(_json_get_str(info, "ihdversion"), _json_get_str(info, "hdversion")));
    LOG("hdversion:%s", global_config.hardware_version);
    copy_text(global_config.vendor, first_of(_json_get_str(info, "odmvendor"), DEFAULT_VENDOR));
    copy_text(global_config.area_code, _json_get_str(info, "province"));
    LOG("area_code:%s", global_config.area_code);
}

void fill_registration() {
    copy_text(global_config.register_url, register_config.register_url);
    LOG("register_url:%s", global_config.register_url);
    copy_text(global_config.register_id, register_config.product_id);
    LOG("register_id:%s", global_config.register_id);
    copy_text(global_config.product_secret, register_config.product_secret);
    LOG("product_secret:%s", global_config.product_secret);
    copy_text(global_config.cache_file_path, register_config.cache_path);
    LOG("cache_file_path:%s", global_config.cache_file_path);
    copy_text(global_config.product_key, register_config.product_key);
    LOG("product_key:%s", global_config.product_key);
    copy_text(global_config.log_file_path, register_config.sdk_log_path);
    LOG("log_file_path:%s", global_config.log_file_path);
}

} // namespace

struct global_config *init_config() {
    LOG("start\n");
    LOG("-------------->start init config<------------------");
    global_config = {};
    {
        JsonRoot root;
        json_object *info = get_dev_info("vrop.ftinfo", "get", &root);
        if (info != nullptr) fill_identity(info);
    }
    fill_registration();
    global_config.property_map = property_map;
    global_config.service_map = service_map;
    g_other_handle.device_online = device_online;
    global_config.other_handle = &g_other_handle;
    global_config.upgrade = dev_upgrade2;
    global_config.interval = SDK_INTERVAL;
    LOG("end\n");
    return &global_config;
}

int device_online() {
    LOG("device is online");
    return upgrade_result_thread(register_config.upgrade_log_path);
}

int dev_upgrade2(void *, void *, void *, const char *url, const char *md5, const char *current_version,
                 const char *strategy) {
    LOG_UPGRADE("curversion: %s strategy: %s", or_empty(current_version), or_empty(strategy));
    qvtkUpgrade_handle(url, md5, global_config.mac, current_version, strategy);
    return 0;
}

int user_chk_reply(const char *product_key, const char *device_name, const char *url, const char *md5,
                   const char *current_version, int has_new, const char *strategy) {
    LOG("----------->user_chk_reply. product_key:%s, device_name:%s, upgrade_url:%s, md5:%s, curversion:%s, "
        "hasnew:%d strategy:%s\n",
        or_empty(product_key), or_empty(device_name), or_empty(url), or_empty(md5), or_empty(current_version),
        has_new, or_empty(strategy));
    if (has_new != 0) qvtkUpgrade_handle(url, md5, global_config.mac, current_version, strategy);
    return 0;
}

int dev_upgrade() {
    return -1;
}
