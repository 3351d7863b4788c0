// SPDX-License-Identifier: Apache-2.0
#include "properties/wifi_senior.h"

#include <mutex>

#include "core/bus.h"
#include "core/log.h"
#include "properties/field.h"
#include "properties/property.h"
#include "properties/radio.h"

namespace {

constexpr Field ENCRYPT = FIELD(Text, WifiSenior, encrypt, "encrypt", "encrypt");
constexpr Field AUTHMODE = FIELD(Text, WifiSenior, authmode, "authmode", "authmode");
constexpr Field MODE = FIELD(Text, WifiSenior, mode, "mode", "mode");
constexpr Field TXPOWER = FIELD(Integer, WifiSenior, txpower, "txpower", "txpower");
constexpr Field BANDWIDTH = FIELD(Integer, WifiSenior, bandwidth, "bandwidth", "bandwidth");
constexpr Field CHANNEL = FIELD(Integer, WifiSenior, channel, "channel", "channel");

constexpr Field DOCUMENT_ROWS[] = {ENCRYPT, AUTHMODE, MODE, TXPOWER, BANDWIDTH, CHANNEL};
constexpr Field MESSAGE_ROWS[] = {BANDWIDTH, TXPOWER, CHANNEL, ENCRYPT, AUTHMODE, MODE};

// What each radio has of its own.
struct Radio {
    const char *name; // of its property
    WifiSenior record;
    std::mutex lock;
    char last_sent[1024];
};
Radio radios[] = {{.name = "wifi2gSeniorInfo"}, {.name = "wifi5gSeniorInfo"}};

template <int R>
int fill_wifi_senior(json_object *document) {
    wifi_senior_config_get(R, &radios[R].record);
    return write_document(DOCUMENT_ROWS, &radios[R].record, document, radios[R].name);
}

template <int R>
const Property PROPERTY = {
    .name = R == RADIO_2G ? "wifi2gSeniorInfo" : "wifi5gSeniorInfo",
    .start = R == RADIO_2G ? "wifi2g_senior_config " : "wifi5g_senior_config ",
    .lock = &radios[R].lock,
    .fill = fill_wifi_senior<R>,
    .parse_failed = "JsonStr Token fail msg:",
    .parse_failed_shows_request = true,
    .request_line = "msg: ",
    .changed =
        "wifiInfo have change buf:", // both radios' changes stand in the log under the Wi-Fi settings' text
    .report_size = sizeof(Radio::last_sent),
    .last_sent = radios[R].last_sent,
    .last_sent_size = sizeof(Radio::last_sent),
};

template <int R>
int apply_wifi_senior(json_object *member, const char *) {
    WifiSenior request{};
    read_request(DOCUMENT_ROWS, member, &request);
    if (R == RADIO_5G)
        LOG("txpower: %d bandwidth: %d channel: %d", request.txpower, request.bandwidth, request.channel);
    const int result = wifi_senior_config_set(R, &request);
    radios[R].record = request;
    LOG("txpower:%d bandwidth:%d channel:%d mode:%s authmode:%s encrypt:%s", request.txpower,
        request.bandwidth, request.channel, request.mode, request.authmode, request.encrypt);
    return result;
}

template <int R>
void reset() {
    radios[R].record = WifiSenior{};
}

// The daemon's object, or null after having logged what is wrong with the arguments.
const char *checked_object(int radio, const WifiSenior *senior) {
    if (senior == nullptr) {
        LOG("param is NULL");
        return nullptr;
    }
    const char *object = radio_settings(radio);
    if (object == nullptr) LOG("param is error");
    return object;
}

} // namespace

int wifi2g_senior_config_init() {
    return property_init(PROPERTY<RADIO_2G>, reset<RADIO_2G>);
}
int wifi5g_senior_config_init() {
    return property_init(PROPERTY<RADIO_5G>, reset<RADIO_5G>);
}

int wifi2g_senior_config_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(PROPERTY<RADIO_2G>, {context, value, reply, reply_length},
                        apply_wifi_senior<RADIO_2G>);
}
int wifi5g_senior_config_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(PROPERTY<RADIO_5G>, {context, value, reply, reply_length},
                        apply_wifi_senior<RADIO_5G>);
}

int wifi2g_senior_config_get(const char *context, char *output, int length) {
    return property_get(PROPERTY<RADIO_2G>, context, output, length);
}
int wifi5g_senior_config_get(const char *context, char *output, int length) {
    return property_get(PROPERTY<RADIO_5G>, context, output, length);
}

int wifi2g_senior_config_report() {
    return property_report(PROPERTY<RADIO_2G>);
}
int wifi5g_senior_config_report() {
    return property_report(PROPERTY<RADIO_5G>);
}

int wifi_senior_config_get(int radio, WifiSenior *senior) {
    const char *object = checked_object(radio, senior);
    if (object == nullptr) return -1;
    *senior = WifiSenior{};
    JsonRoot root;
    if (json_object *reply = get_dev_info(object, "get", &root)) read_daemon(DOCUMENT_ROWS, reply, senior);
    return 0;
}

int wifi_senior_config_set(int radio, const WifiSenior *senior) {
    const char *object = checked_object(radio, senior);
    if (object == nullptr) return -1;
    LOG("authmode: %s, mode: %s txpower: %d bandwidth: %d channel: %d", senior->authmode, senior->mode,
        senior->txpower, senior->bandwidth, senior->channel);
    BusMessage message;
    write_message(MESSAGE_ROWS, senior, &message);
    return set_or_log(object, "set", message, "set wifi senior config fail");
}
