// SPDX-License-Identifier: Apache-2.0
#include "properties/wifi_info.h"

#include <mutex>

#include "core/bus.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/field.h"
#include "properties/property.h"
#include "properties/radio.h"
#include "properties/wifi_apply.h"
#include "properties/wifi_encryption.h"
#include "properties/wifi_radio.h"

namespace {

WifiRecord wifi_record;
std::mutex wifi_lock;
char interface_name[128];
char last_sent[2048];

constexpr Field FIELDS[] = {
    // these two only while the bands are merged
    FIELD(Switch, WifiRecord, sames, "wifiSames", "wifiswitch"),
    FIELD(Switch, WifiRecord, sames_hidden, "wifiSamesHidden", nullptr),
    // always
    FIELD(Switch, WifiRecord, open_2g, "wifi2gOpen", "wifi24apenable"),
    FIELD(Text, WifiRecord, name_2g, "wifi2gName", "wifi24ssid"),
    FIELD(Text, WifiRecord, pwd_2g, "wifi2gPwd", "wifi24key"),
    FIELD(Integer, WifiRecord, encryption_2g, "wifi2gEncryption", "wifi24authmode", get_report_encrytion),
    FIELD(Switch, WifiRecord, hidden_2g, "wifi2gHidden", nullptr),
    FIELD(Switch, WifiRecord, open_5g, "wifi5gOpen", "wifi5apenable"),
    FIELD(Text, WifiRecord, name_5g, "wifi5gName", "wifi5ssid"),
    FIELD(Text, WifiRecord, pwd_5g, "wifi5gPwd", "wifi5key"),
    FIELD(Integer, WifiRecord, encryption_5g, "wifi5gEncryption", "wifi5authmode", get_report_encrytion),
    FIELD(Switch, WifiRecord, hidden_5g, "wifi5gHidden", nullptr),
    FIELD(Switch, WifiRecord, sames_open, "wifiSamesOpen", "wifidual"),
    FIELD(Text, WifiRecord, sames_name, "wifiSamesName", nullptr),
    FIELD(Text, WifiRecord, sames_pwd, "wifiSamesPwd", nullptr),
    FIELD(Switch, WifiRecord, use_2g_pwd, "use2gPwd", "use2_4gpwd"),
    FIELD(Switch, WifiRecord, backup_open, "backupWifiOpen", "wifi5backup"),
};
constexpr size_t MERGED_ROWS = 2;

int fill_wifi_info(json_object *document) {
    get_wifi_config(&wifi_record);
    const Fields rows(FIELDS);
    return write_document(wifi_record.sames_open != 0 ? rows : rows.subspan(MERGED_ROWS), &wifi_record,
                          document, "wifiInfo");
}

const Property PROPERTY = {
    .name = "wifiInfo",
    .start = "wifiInfo ",
    .lock = &wifi_lock,
    .fill = fill_wifi_info,
    .member_missing = nullptr,
    .changed = "wifiInfo have change buf:",
    .report_size = 2048,
    .last_sent = last_sent,
    .last_sent_size = sizeof(last_sent),
};

int apply_wifi_info(json_object *member, const char *context) {
    copy_text(interface_name, context);
    WifiRecord request{};
    read_request(FIELDS, member, &request);
    const int result = set_wifi_config(&request, interface_name);
    wifi_record = request; // also when the daemon refused: the next get or report reads it anew
    return result;
}

} // namespace

int wifiInfo_init() {
    return property_init(PROPERTY, [] { wifi_record = WifiRecord{}; });
}

int wifiInfo_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(PROPERTY, {context, value, reply, reply_length}, apply_wifi_info);
}

int wifiInfo_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int wifiInfo_report() {
    return property_report(PROPERTY);
}

int get_wifi_config(WifiRecord *wifi) {
    if (wifi == nullptr) return -1;
    *wifi = WifiRecord{};
    wifi->hidden_2g = get_wifi_hidden(RADIO_2G);
    wifi->hidden_5g = get_wifi_hidden(RADIO_5G);
    JsonRoot root;
    json_object *reply = get_dev_info(WIFI_SIMPLE, "get", &root);
    if (reply == nullptr) return 0;
    read_daemon(FIELDS, reply, wifi);
    if (wifi->sames_open != 0) {
        copy_text(wifi->sames_name, wifi->name_2g);
        copy_text(wifi->sames_pwd, wifi->pwd_2g);
        wifi->sames_hidden = wifi->hidden_2g;
    }
    return 0;
}
