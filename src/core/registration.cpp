// SPDX-License-Identifier: Apache-2.0
#include "core/registration.h"

#include <cstddef>
#include <cstdio>

#include "core/bus.h"
#include "core/files.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"

#define DEVICE_SERVER "https://" QVTK_DEVICE_SERVER ":11443/device-api/device/"
#define ADMIN_SERVER "https://" QVTK_ADMIN_SERVER ":11443/device-api/iot/device/"

const char *const DEFAULT_CHECK_UPGRADE_URL = DEVICE_SERVER "check-upgrade";
const char *const DEFAULT_UPGRADE_PROGRESS_URL = DEVICE_SERVER "upgrade-progress";

register_config_record register_config;
int32_t app_waitTime;

namespace {

constexpr size_t SCRATCH = 128;
constexpr int32_t WAIT_WITHOUT_CONFIGURATION = 30;
constexpr char CACHE_FILE[] = "/tmp/qvtk.cache";
constexpr size_t CACHE_LIMIT = 1024;

char format_flag[128];

// A text of the record: its key, its place, what it is when the key is missing, and how the console shows it.
struct TextField {
    const char *key;
    size_t offset;
    size_t width;
    const char *fallback;
    bool without_object;    // the fallback also serves when there is no configuration at all
    const char *found_echo; // label of a value that was found, or null
    const char *final_echo; // label of the value taken in the end, or null
};

#define FIELD(member) offsetof(register_config_record, member), sizeof(register_config_record::member)

const TextField FIELDS_BEFORE_NUMBERS[] = {
    {"productkey", FIELD(product_key), DEFAULT_PRODUCT_KEY, true, "productkey", nullptr},
    {"productsecret", FIELD(product_secret), "8vbq4ne1xrtpds62", true, "productsecret", nullptr},
    {"registerurl", FIELD(register_url), DEVICE_SERVER "register", true, "registerurl", nullptr},
    {"backupurl", FIELD(backup_url), ADMIN_SERVER "upload-config-file", false, "backupurl", nullptr},
    {"reporturl", FIELD(report_url), DEVICE_SERVER "report-runtime", false, "reporturl", "runtime_url"},
    {"timeurl", FIELD(time_url), DEVICE_SERVER "get-settings", false, nullptr, "timeurl"},
    {"productid", FIELD(product_id), "router", true, "productid", nullptr},
    {"cachepath", FIELD(cache_path), CACHE_FILE, true, "cachepath", nullptr},
    {"devicesecret", FIELD(device_secret), "", false, "devicesecret", nullptr},
    {"logpath", FIELD(log_path), "/apvar/log/qvtk.log", true, "logpath", nullptr},
    {"upgradelogpath", FIELD(upgrade_log_path), "/apetc/rvxa/qvtk_upgrade.log", true, "upgradelogpath",
     nullptr},
};

const TextField FIELDS_AFTER_NUMBERS[] = {
    {"upgradeprourl", FIELD(upgrade_progress_url), DEVICE_SERVER "upgrade-progress", false, "upgradeprourl",
     "upgradeprogress_url"},
    {"ecmanagerurl", FIELD(storage_url), DEVICE_SERVER "get-hcdn-package", false, "ecmanagerurl",
     "ecmanager_url"},
    {"tebralogpath", FIELD(sdk_log_path), "/apvar/log/qvtk_tebra.log", true, "logpath", nullptr},
};

void store(register_config_record *record, const TextField &field, const char *value) {
    copy_text(reinterpret_cast<char *>(record) + field.offset, field.width, value);
}

void load_text(register_config_record *record, const TextField &field, json_object *config) {
    char scratch[SCRATCH];
    copy_text(scratch, _json_get_str(config, field.key));
    bool found = scratch[0] != '\0';
    if (found && field.found_echo != nullptr) printf("%s:%s\n", field.found_echo, scratch);
    const char *value = found ? scratch : field.fallback;
    if (field.final_echo != nullptr) printf("%s:%s\n", field.final_echo, value);
    store(record, field, value);
}

// A -1 in the configuration stands for none.
void load_wait_time(register_config_record *record, json_object *config) {
    if (JsonGetInt64(config, "networkwaittime") == -1) return;
    record->network_wait_time = _json_get_int(config, "networkwaittime");
    printf("networkwaittime:%d\n", record->network_wait_time);
}

void load_format_flag(json_object *config) {
    const char *value = JsonGetStr(config, "formatflag");
    if (value == nullptr) return;
    copy_text(format_flag, value);
    printf("formatflag:%s\n", format_flag);
}

void load_from(json_object *config, register_config_record *record) {
    printf("get qvtk ubus info\n");
    for (const TextField &field : FIELDS_BEFORE_NUMBERS)
        load_text(record, field, config);
    load_wait_time(record, config);
    load_format_flag(config);
    for (const TextField &field : FIELDS_AFTER_NUMBERS)
        load_text(record, field, config);
}

void load_defaults(register_config_record *record) {
    perror("get_dev_info");
    printf("ubus get qvtk config is NULL\n");
    for (const TextField &field : FIELDS_BEFORE_NUMBERS)
        store(record, field, field.without_object ? field.fallback : "");
    for (const TextField &field : FIELDS_AFTER_NUMBERS)
        store(record, field, field.without_object ? field.fallback : "");
    get_deviceSecret(record->device_secret, sizeof record->device_secret);
    printf("device_secret:%s\n", record->device_secret);
    record->network_wait_time = WAIT_WITHOUT_CONFIGURATION;
}

} // namespace

int get_qvtkRegister_info(register_config_record *record) {
    if (record == nullptr) {
        printf("param is NULL\n");
        return -1;
    }
    *record = {};
    JsonRoot root;
    json_object *config = get_dev_info("vrop.qvtkconfig", "get", &root);
    if (config != nullptr)
        load_from(config, record);
    else
        load_defaults(record);
    app_waitTime = record->network_wait_time;
    set_log_filepath(record->log_path);
    set_upgrade_log_filepath(record->upgrade_log_path);
    return 0;
}

const char *get_format_flag() {
    return format_flag;
}

int get_deviceSecret(char *output, int size) {
    if (output == nullptr || size <= 0) {
        LOG("param is NULL");
        return -1;
    }
    std::string text;
    if (!read_own_file(CACHE_FILE, CACHE_LIMIT, &text)) {
        perror("fopen");
        return -1;
    }
    JsonRoot cache(json_tokener_parse(text.c_str()));
    if (!cache) {
        perror("JsonStrToken");
        LOG("JsonStr Token fail msg:%s", text.c_str());
        return -1;
    }
    const char *secret = JsonGetStr(cache.get(), "secret");
    if (secret != nullptr) copy_text(output, static_cast<size_t>(size), secret);
    return 0;
}
