// SPDX-License-Identifier: Apache-2.0
#include "properties/wifi_apply.h"

#include <cstring>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/radio.h"
#include "properties/wifi_guest.h"
#include "properties/wifi_radio.h"
#include "relay/event_client.h"

namespace {

// The names before the change.
struct CurrentNames {
    char ssid_2g[32];
    char ssid_5g[32];
    char guest_2g[64];
    char guest_5g[64];
};

CurrentNames read_current_names() {
    CurrentNames names{};
    JsonRoot root;
    if (json_object *reply = get_dev_info(WIFI_SIMPLE, "get", &root)) {
        copy_text(names.ssid_2g, _json_get_str(reply, "wifi24ssid"));
        copy_text(names.ssid_5g, _json_get_str(reply, "wifi5ssid"));
        LOG("ssid_2g:%s", names.ssid_2g);
        LOG("ssid_5g:%s", names.ssid_5g);
    }
    JsonRoot root_2g;
    if (json_object *guest = get_guest_network(RADIO_2G, &root_2g)) {
        copy_text(names.guest_2g, _json_get_str(guest, "ssid"));
        LOG("vistor_ssid_2g:%s", names.guest_2g);
    } else {
        LOG("get 2.4g visitor info fail");
    }
    JsonRoot root_5g;
    if (json_object *guest = get_guest_network(RADIO_5G, &root_5g)) {
        copy_text(names.guest_5g, _json_get_str(guest, "ssid"));
        LOG("vistor_ssid_5g:%s", names.guest_5g);
    } else {
        LOG("get 5g wifi info fail");
    }
    return names;
}

void set_both_encryptions(const WifiRecord &wifi) {
    const bool merged = wifi.sames_open == 1;
    const int merged_hidden = wifi.sames_hidden == 1 ? 1 : 0;
    if (set_encrytion_and_hidden(RADIO_2G, wifi.encryption_2g, merged ? merged_hidden : wifi.hidden_2g) != 0)
        LOG("set 2.4G  encrytion and hidden fail");
    if (set_encrytion_and_hidden(RADIO_5G, wifi.encryption_5g, merged ? merged_hidden : wifi.hidden_5g) != 0)
        LOG("set 5G  encrytion and hidden fail");
}

// The restart takes long only when the backup switch changes.
void send_backup_event(int requested, const char *interface_name) {
    const int current = get_wifi_wifi5Backup();
    if (current == -1) return;
    char mac[64] = "";
    int delay = 1;
    if (requested != current) get_networkRestartTime_info(mac, sizeof(mac), &delay);
    send_restart_event(mac, interface_name, delay);
}

// One radio's guest network follows the main network when its name begins with the first `compared` bytes of
// the main network's present name.
int follow_guest_name(int radio, const char *guest, const char *main_now, size_t compared,
                      const char *main_new) {
    if (*main_now == '\0' || strncmp(guest, main_now, compared) != 0) return 0;
    char name[64];
    if (make_guest_name(main_new, name, sizeof(name)) != 0) return -1;
    const int result = radio == RADIO_2G ? set_wifi2g_vistor_config(name) : set_wifi5g_vistor_config(name);
    if (result != 0) LOG("set visitor name fail, radio:%d", radio);
    return 0;
}

size_t cut_length(const char *name) {
    return static_cast<size_t>(get_vistor_cut_ssid(name));
}

// What the daemon is told of both networks, behind the names for the backup switch.
struct Networks {
    int on_2g;
    const char *name_2g, *pwd_2g;
    int on_5g;
    const char *name_5g, *pwd_5g;
};

int write_networks(BusMessage *message, const Networks &networks, const WifiRecord &wifi) {
    message->integer("wifi24apenable", networks.on_2g)
        .text("wifi24ssid", networks.name_2g)
        .text("wifi24key", networks.pwd_2g)
        .integer("wifi5apenable", networks.on_5g)
        .text("wifi5ssid", networks.name_5g)
        .integer("wifidual", wifi.sames_open)
        .integer("wifi5backup", wifi.backup_open)
        .integer("use2_4gpwd", wifi.use_2g_pwd)
        .text("wifi5key", networks.pwd_5g);
    const int ret = set_dev_info(WIFI_SIMPLE, "set", *message);
    LOG("ret:%d", ret);
    return ret;
}

int set_merged(const WifiRecord &wifi, const CurrentNames &now, const char *interface_name) {
    if (wifi.sames == -1 || wifi.backup_open == -1) {
        LOG("APP send data is error");
        return -1;
    }
    send_backup_event(wifi.backup_open, interface_name);
    RadioEncryption encryption{};
    if (get_wifisenior_config(RADIO_2G, &encryption) == 0) set_wifisenior_config(RADIO_5G, &encryption);
    if (follow_guest_name(RADIO_2G, now.guest_2g, now.ssid_2g, strlen(now.ssid_2g), wifi.name_2g) != 0 ||
        follow_guest_name(RADIO_5G, now.guest_5g, now.ssid_5g, strlen(now.ssid_5g), wifi.name_5g) != 0)
        return -1;
    BusMessage message;
    message.text("wifi5backup24ssid", wifi.sames_name).text("wifi5backup5ssid", wifi.sames_name);
    const Networks both{wifi.sames, wifi.sames_name, wifi.sames_pwd,
                        wifi.sames, wifi.sames_name, wifi.sames_pwd};
    const int ret = write_networks(&message, both, wifi);
    if (ret != 0) LOG("set bandSteeringConfig fail");
    return ret;
}

int set_separate(const WifiRecord &wifi, const CurrentNames &now, const char *interface_name) {
    if (wifi.open_2g == -1 || wifi.open_5g == -1 || wifi.use_2g_pwd == -1 || wifi.backup_open == -1) {
        LOG("APP send data is error");
        return -1;
    }
    LOG("wifi5backup24ssid:%s wifi5backup5ssid:%s", wifi.name_2g, wifi.name_5g);
    send_backup_event(wifi.backup_open, interface_name);
    if (follow_guest_name(RADIO_2G, now.guest_2g, now.ssid_2g, cut_length(now.ssid_2g), wifi.name_2g) != 0 ||
        follow_guest_name(RADIO_5G, now.guest_5g, now.ssid_5g, cut_length(now.ssid_5g), wifi.name_5g) != 0)
        return -1;
    BusMessage message;
    message.text("wifi5backup5ssid", wifi.name_5g).text("wifi5backup24ssid", wifi.name_2g);
    const Networks own{wifi.open_2g, wifi.name_2g, wifi.pwd_2g, wifi.open_5g, wifi.name_5g, wifi.pwd_5g};
    const int ret = write_networks(&message, own, wifi);
    if (ret != 0) LOG("set 2.4G and 5G wifi fail");
    return ret;
}

} // namespace

int set_wifi_config(const WifiRecord *wifi, const char *interface_name) {
    if (wifi == nullptr || interface_name == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    const CurrentNames now = read_current_names();
    set_both_encryptions(*wifi);
    if (wifi->sames_open == -1) {
        LOG("APP send data format is error");
        return -1;
    }
    return wifi->sames_open != 0 ? set_merged(*wifi, now, interface_name)
                                 : set_separate(*wifi, now, interface_name);
}
