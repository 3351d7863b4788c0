// SPDX-License-Identifier: Apache-2.0
#include "properties/wifi_radio.h"

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/radio.h"
#include "properties/wifi_encryption.h"

int get_wifi_hidden(int radio) {
    const char *object = radio_settings(radio);
    if (object == nullptr) return -1;
    JsonRoot root;
    json_object *reply = get_dev_info(object, "get", &root);
    return reply != nullptr ? _json_get_int(reply, "hide") : -1;
}

int get_wifi_wifi5Backup() {
    JsonRoot root;
    json_object *reply = get_dev_info(WIFI_SIMPLE, "get", &root);
    return reply != nullptr ? _json_get_int(reply, "wifi5backup") : -1;
}

int set_wifi_wifi5Backup(int backup) {
    BusMessage message;
    message.integer("wifi5backup", backup);
    return set_dev_info("vrop.wifi", "set", message);
}

int set_wifi_use2_4gpwd(int use) {
    BusMessage message;
    message.integer("use2_4gpwd", use);
    return set_dev_info("vrop.wifi", "set", message);
}

int set_encrytion_and_hidden(int radio, int encryption, int hidden) {
    if (radio == -1 || hidden == -1) {
        LOG("APP send data format is error");
        return -1;
    }
    const char *object = radio_settings(radio);
    if (object == nullptr) return -1;
    constexpr int WPA_PSK = 1; // never written here
    BusMessage message;
    if (encryption != WPA_PSK) {
        char authmode[32];
        get_set_encrytion(encryption, authmode, sizeof(authmode));
        message.text("authmode", authmode);
    }
    message.integer("hide", hidden);
    return set_dev_info(object, "set", message);
}

int get_wifisenior_config(int radio, RadioEncryption *encryption) {
    const char *object = radio_settings(radio);
    if (object == nullptr || encryption == nullptr) return -1;
    JsonRoot root;
    json_object *reply = get_dev_info(object, "get", &root);
    if (JsonGetStr(reply, "authmode") == nullptr) return -1; // nothing that could be given to the other radio
    copy_text(encryption->authmode, _json_get_str(reply, "authmode"));
    copy_text(encryption->encrypt, _json_get_str(reply, "encrypt"));
    return 0;
}

int set_wifisenior_config(int radio, const RadioEncryption *encryption) {
    const char *object = radio_settings(radio);
    if (object == nullptr || encryption == nullptr) return -1;
    BusMessage message;
    message.text("authmode", encryption->authmode)
        .text("encrypt", encryption->encrypt)
        .integer("noteffectflag", 1);
    return set_dev_info(object, "set", message);
}
