// SPDX-License-Identifier: Apache-2.0
#include "properties/wifi_guest.h"

#include <cstring>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/radio.h"

namespace {

constexpr int CUT_FROM = 26;        // bytes: from here on a name is cut
constexpr int SUFFIX_LENGTH = 6;    // "_Guest"
constexpr int MAX_CONTINUATION = 3; // bytes behind the first of a UTF-8 character

bool is_continuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

int set_guest_name(int radio, const char *ssid) {
    GuestAccess access{};
    if (get_wifi_vistor_enable(radio, &access) != 0) return -1;
    return set_guest_network(radio, {access.enable, ssid, access.authmode, access.key});
}

} // namespace

int set_guest_network(int radio, const GuestNetwork &guest) {
    BusMessage message;
    message.integer("index", GUEST_INDEX)
        .integer("enable", guest.enable)
        .integer("hide", guest.enable == 0 ? 1 : 0)
        .text("ssid", guest.ssid)
        .text("authmode", guest.authmode);
    if (guest.key != nullptr) message.text("key", guest.key);
    message.integer("noteffectflag", 1);
    return set_dev_info(radio_access_points(radio), "set", message);
}

json_object *get_guest_network(int radio, JsonRoot *root) {
    const char *object = radio_access_points(radio);
    if (object == nullptr) return nullptr;
    BusMessage message;
    message.integer("index", GUEST_INDEX);
    return get_param_dev_info(object, "getbyindex", message, root);
}

int get_wifi_vistor_enable(int radio, GuestAccess *access) {
    if (access == nullptr) return -1;
    JsonRoot root;
    json_object *guest = get_guest_network(radio, &root);
    if (guest == nullptr) return -1;
    access->enable = _json_get_int(guest, "enable");
    copy_text(access->authmode, _json_get_str(guest, "authmode"));
    copy_text(access->key, _json_get_str(guest, "key"));
    return 0;
}

int set_wifi2g_vistor_config(const char *ssid) {
    return set_guest_name(RADIO_2G, ssid);
}

int set_wifi5g_vistor_config(const char *ssid) {
    return set_guest_name(RADIO_5G, ssid);
}

int get_vistor_cut_ssid(const char *name) {
    if (name == nullptr) return -1;
    const int length = static_cast<int>(strlen(name));
    if (length < CUT_FROM) return length;
    const int cut = length - SUFFIX_LENGTH;
    for (int back = 0; back <= MAX_CONTINUATION; ++back) {
        if (!is_continuation(name[cut - back])) return cut - back;
    }
    return cut; // not UTF-8: there is no character to split
}

int make_guest_name(const char *main_name, char *guest_name, size_t size) {
    const int cut = get_vistor_cut_ssid(main_name);
    if (cut < 0) {
        LOG("cut len error!!");
        return -1;
    }
    snprintf(guest_name, size, "%.*s_Guest", cut, main_name);
    return 0;
}
