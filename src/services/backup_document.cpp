// SPDX-License-Identifier: Apache-2.0
#include "services/backup_document.h"

#include "core/json_path.h"
#include "core/log.h"
#include "services/backup_fields.h"

namespace {

// The object's member, null when it is none of that type.
json_object *section_of(json_object *object, const char *name, json_type type = json_type_object) {
    json_object *section = nullptr;
    JsonGetObj(object, name, &section);
    return json_object_is_type(section, type) ? section : nullptr;
}

void read_radio(const backup::RadioRows &rows, json_object *wifi, BackupRadio *radio) {
    json_object *section = section_of(wifi, rows.section);
    const bool has_status = rows.status->cloud != nullptr;
    if (has_status) read_request(rows.status, section, radio);
    read_request(rows.simple, section, radio);
    read_request(backup::SENIOR, section, radio);
    if (has_status && radio->status != 1) radio->enable = -1;
}

void read_wifi(json_object *section, BackupWifi *wifi) {
    if (section == nullptr) return;
    read_request(backup::SAME_SSID, section, wifi);
    for (int radio : {RADIO_2G, RADIO_5G}) {
        const backup::RadioRows &rows = backup::RADIOS[radio];
        read_radio(rows, section, &wifi->radio[radio]);
        wifi->backup_enable[radio] =
            request_integer(section_of(section, rows.backup_section), rows.simple[0].cloud);
    }
    LOG("tmp.wifi_cfg.wifi5gBackup_info.enable:%d", wifi->backup_enable[RADIO_5G]);
    LOG("tmp.wifi_cfg.wifi2gBackup_info.enable:%d", wifi->backup_enable[RADIO_2G]);
}

void getV4_internet_info(json_object *section, BackupInternet *internet) {
    read_request(backup::ADDRESS4, section, internet);
    read_request(backup::DNS4, section, internet);
}

void getV6_internet_info(json_object *section, BackupInternet *internet) {
    for (Fields rows : {Fields(backup::ADDRESS6), Fields(backup::DNS6_SOURCE), Fields(backup::DNS6),
                        Fields(backup::PREFIX_DELEGATION)})
        read_request(rows, section, internet);
}

void read_addresses(json_object *section, BackupInternet *internet) {
    LOG("ipMode:%d", internet->ip_mode);
    if (internet->ip_mode != BACKUP_IPV4) {
        read_request(backup::GATEWAY6_SOURCE, section, internet);
        read_request(backup::PREFIX_SOURCE, section, internet);
        if (internet->prefix_source == BACKUP_PREFIX_STATIC) {
            read_request(backup::PREFIX, section, internet);
            read_request(backup::PREFIX_LENGTH, section, internet);
        }
    }
    if (internet->ip_mode == BACKUP_IPV4 || internet->ip_mode == BACKUP_IP_BOTH)
        getV4_internet_info(section, internet);
    if (internet->ip_mode == BACKUP_IPV6 || internet->ip_mode == BACKUP_IP_BOTH)
        getV6_internet_info(section, internet);
}

// Only what the mode needs.
void read_internet(json_object *section, BackupInternet *internet) {
    BackupInternet modes;
    read_request(backup::MODES, section, &modes);
    internet->router_mode = modes.router_mode;
    if (modes.router_mode == BACKUP_RELAY) read_request(backup::RELAY, section, internet);
    if (modes.router_mode != BACKUP_ROUTER) return;
    internet->sub_mode = modes.sub_mode;
    if (modes.sub_mode < BACKUP_PPPOE) {
        internet->ip_mode = modes.ip_mode;
        read_addresses(section, internet);
    } else if (modes.sub_mode == BACKUP_PPPOE) {
        read_request(backup::PPPOE, section, internet);
        read_request(backup::DNS4, section, internet);
    }
}

void read_iptv(json_object *section, BackupIptv *iptv) {
    json_object *list = section_of(section, backup::IPTV_LIST, json_type_array);
    const size_t count = list != nullptr ? json_object_array_length(list) : BackupIptv::MOST + 1;
    if (count > BackupIptv::MOST) return;
    iptv->count = static_cast<int32_t>(count);
    for (size_t i = 0; i < count; i++)
        read_request(backup::IPTV_PORT, json_object_array_get_idx(list, i), &iptv->ports[i]);
}

} // namespace

void read_backup_document(json_object *document, BackupRecord *record) {
    read_wifi(section_of(document, backup::WIFI), &record->wifi);
    read_internet(section_of(document, backup::INTERNET), &record->internet);
    read_request(backup::MESH_RESTORE, section_of(document, backup::MESH), &record->mesh);
    read_iptv(section_of(document, backup::IPTV), &record->iptv);
    read_request(backup::ACCOUNT_ROWS, section_of(document, backup::ACCOUNT), &record->account);
}

const char *get_realBeaconType(int32_t code) {
    return backup::text_in<WIFI_AUTHMODES>(code);
}
