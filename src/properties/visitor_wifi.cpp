// SPDX-License-Identifier: Apache-2.0
#include "properties/visitor_wifi.h"

#include <cstring>
#include <mutex>

#include "core/bus.h"
#include "core/clock.h"
#include "core/json_path.h"
#include "core/log.h"
#include "properties/field.h"
#include "properties/property.h"
#include "properties/radio.h"
#include "properties/restart.h"
#include "properties/wifi_guest.h"

std::atomic<int32_t> visitor_setTime{0};

namespace {

constexpr char CONTROL[] = "vrop.wifi.guestwificontrol";
constexpr int RESTART_SECONDS = 5;
constexpr int DEFAULT_DURATION = 2;

VisitorWifi visitor_wifi;
std::mutex visitor_lock;
char last_sent[4096];

int32_t has_password(const char *authmode) {
    return authmode != nullptr && strcmp(authmode, "NONE") == 0 ? 0 : 1;
}

constexpr Field FIELDS[] = {
    FIELD(Switch, VisitorWifi, main_open, "mainOpen", "controlenable"),
    FIELD(Switch, VisitorWifi, open_2g, "wifi2gOpen", "enable"),
    FIELD(Text, VisitorWifi, name_2g, "wifi2gName", "ssid"),
    FIELD(Text, VisitorWifi, pwd_2g, "wifi2gPwd", "key"),
    FIELD(Switch, VisitorWifi, open_pwd_2g, "wifi2gOpenPwd", "authmode", has_password),
    FIELD(Switch, VisitorWifi, open_5g, "wifi5gOpen", "enable"),
    FIELD(Text, VisitorWifi, name_5g, "wifi5gName", "ssid"),
    FIELD(Text, VisitorWifi, pwd_5g, "wifi5gPwd", "key"),
    FIELD(Switch, VisitorWifi, open_pwd_5g, "wifi5gOpenPwd", "authmode", has_password),
    FIELD(Integer, VisitorWifi, open_duration, "openDuration", "keeptime"),
    FIELD(Integer, VisitorWifi, open_time, "openTime", nullptr),
};
// The daemon answers with one object per radio and one for the control.
constexpr Fields ROWS(FIELDS);
constexpr Fields MAIN_ROW = ROWS.subspan(0, 1);
constexpr Fields RADIO_ROWS[] = {ROWS.subspan(1, 4), ROWS.subspan(5, 4)};
constexpr Fields DURATION_ROW = ROWS.subspan(9, 1);

int fill_visitor_wifi(json_object *document) {
    get_visitorWifi_config(&visitor_wifi);
    return write_document(FIELDS, &visitor_wifi, document, "visitorsWifi");
}

const Property PROPERTY = {
    .name = "visitorsWifi",
    .start = "visitorWifi ",
    .lock = &visitor_lock,
    .fill = fill_visitor_wifi,
    .request_line = "msg:",
    .changed = "visitorWifi have change buf:",
    .report_size = 1024,
    .last_sent = last_sent,
    .last_sent_size = sizeof(last_sent),
};

int apply_visitor_wifi(json_object *member, const char *context) {
    VisitorWifi request{};
    read_request(FIELDS, member, &request);
    announce_restart(context, RESTART_SECONDS);
    const int result = set_visitorwifi_config(&request);
    if (result != 0)
        LOG("set visitor wifi fail");
    else
        LOG("------------------------------------------------------>set ok");
    return result;
}

int set_guest(int radio, int open, const char *name, int open_pwd, const char *pwd) {
    if (open_pwd == 0) return set_guest_network(radio, {open, name, "NONE", nullptr});
    return set_guest_network(radio, {open, name, "WPA2-PSK", pwd});
}

} // namespace

int visitorWifi_init() {
    return property_init(PROPERTY, [] { visitor_wifi = {}; });
}

int visitorWifi_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(PROPERTY, {context, value, reply, reply_length}, apply_visitor_wifi);
}

int visitorWifi_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int visitorWifi_report() {
    return property_report(PROPERTY);
}

int get_visitorWifi_config(VisitorWifi *visitor) {
    if (visitor == nullptr) return -1;
    for (int radio : {RADIO_2G, RADIO_5G}) {
        JsonRoot root;
        if (json_object *guest = get_guest_network(radio, &root))
            read_daemon(RADIO_ROWS[radio], guest, visitor);
    }
    get_visitor_control(visitor);
    visitor->open_time = visitor_setTime;
    return 0;
}

int get_dual() {
    JsonRoot root;
    json_object *control = get_dev_info(CONTROL, "get", &root);
    return control != nullptr ? _json_get_int(control, "controlenable") : 0;
}

int get_visitor_control(VisitorWifi *visitor) {
    if (visitor == nullptr) return -1;
    JsonRoot root;
    json_object *control = get_dev_info(CONTROL, "get", &root);
    if (control == nullptr) return -1;
    read_daemon(DURATION_ROW, control, visitor);
    read_daemon(MAIN_ROW, control, visitor);
    return 0;
}

int set_visitorwifi_config(VisitorWifi *request) {
    const int current = get_dual();
    if (request == nullptr || request->main_open == -1) {
        LOG("APP send data is error");
        return -1;
    }
    // turning the main switch turns both guest networks, whatever the request says of them
    if (request->main_open != current) request->open_2g = request->open_5g = request->main_open;
    if (request->open_2g == -1) {
        LOG("APP send data is error");
        return -1;
    }
    if (set_wifi2g_vistor(*request) != 0) LOG("set 2.4G visitor wifi fail");
    if (request->open_5g != -1 && set_wifi5g_vistor(*request) != 0) LOG("set 5G visitor wifi fail");
    const int result = time_control(request->open_duration, request->main_open);
    if (result == 0) visitor_setTime = static_cast<int32_t>(now_seconds());
    return result;
}

int set_wifi2g_vistor(const VisitorWifi &visitor) {
    return set_guest(RADIO_2G, visitor.open_2g, visitor.name_2g, visitor.open_pwd_2g, visitor.pwd_2g);
}

int set_wifi5g_vistor(const VisitorWifi &visitor) {
    return set_guest(RADIO_5G, visitor.open_5g, visitor.name_5g, visitor.open_pwd_5g, visitor.pwd_5g);
}

int time_control(int open_duration, int main_open) {
    BusMessage message;
    message.integer("controlenable", main_open)
        .integer("keeptime", open_duration == -1 ? DEFAULT_DURATION : open_duration)
        .integer("noteffectflag", 0);
    return set_dev_info(CONTROL, "set", message);
}
