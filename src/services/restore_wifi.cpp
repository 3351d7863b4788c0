// SPDX-License-Identifier: Apache-2.0
#include "core/bus.h"
#include "core/log.h"
#include "properties/wifi_radio.h"
#include "services/backup_fields.h"
#include "services/restore_sections.h"

namespace {

constexpr Field BACKUP_SWITCH[] = {FIELD(Integer, BackupRadio, enable, "Enable", "wifi5backup")};

// The daemon has one switch for both radios' backup networks; the 5 GHz one's counts where they differ.
BackupRadio backup_switch(const BackupWifi &wifi) {
    BackupRadio backup;
    backup.enable = wifi.backup_enable[wifi.backup_enable[RADIO_5G] != -1 ? RADIO_5G : RADIO_2G];
    return backup;
}

int restore_networks(const BackupWifi &wifi) {
    BusMessage message;
    int count = write_given_message(backup::SAME_SSID, &wifi, &message);
    for (int radio : {RADIO_2G, RADIO_5G})
        count += write_given_message(backup::RADIOS[radio].simple, &wifi.radio[radio], &message);
    const BackupRadio backup = backup_switch(wifi);
    count += write_given_message(BACKUP_SWITCH, &backup, &message);
    return count > 0 ? set_dev_info(WIFI_SIMPLE, "set", message) : 0;
}

} // namespace

int set_wifi_seniorConfig(int radio, const BackupRadio &record) {
    BusMessage message;
    if (write_given_message(backup::SENIOR, &record, &message) == 0) return 0;
    return set_dev_info(radio_settings(radio), "set", message);
}

int restore_wifi(const BackupWifi &wifi) {
    if (restore_networks(wifi) != 0) {
        LOG("set wifi fail");
        return -1;
    }
    int result = 0;
    for (int radio : {RADIO_2G, RADIO_5G}) {
        if (set_wifi_seniorConfig(radio, wifi.radio[radio]) == 0) continue;
        LOG("set %s senior config fail", radio == RADIO_2G ? "2.4G" : "5G");
        result = -1;
    }
    return result;
}
