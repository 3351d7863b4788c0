// SPDX-License-Identifier: Apache-2.0
#include "services/backup_read.h"

#include <cstring>
#include <string>
#include <utility>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "digests/digest.h"
#include "properties/wifi_radio.h"
#include "services/backup_fields.h"
#include "services/backup_section.h"

namespace {

using namespace backup;

// Adds a section that the rows alone describe.
int add_record(json_object *document, const char *name, Fields rows, const void *record) {
    JsonRoot section(json_object_new_object());
    if (!section || add_rows(rows, record, section.get()) != 0) return -1;
    return add_section(document, name, std::move(section));
}

int add_radio(int radio, json_object *simple, json_object *wifi) {
    JsonRoot root;
    json_object *senior = get_dev_info(radio_settings(radio), "get", &root);
    if (senior == nullptr) return -1;
    const RadioRows &rows = RADIOS[radio];
    BackupRadio record;
    read_daemon(rows.simple, simple, &record);
    read_daemon(SENIOR, senior, &record);
    JsonRoot section(json_object_new_object());
    // always 1: a restore looks at "Enable" only then
    if (rows.status->cloud != nullptr && JsonSetInt64(section.get(), nullptr, rows.status->cloud, 1) == 0)
        return -1;
    if (add_rows(rows.simple, &record, section.get()) != 0) return -1;
    if (add_rows(SENIOR, &record, section.get()) != 0) return -1;
    return add_section(wifi, rows.section, std::move(section));
}

// The daemon has one switch for the backup networks of both radios.
int add_backup_switches(json_object *simple, json_object *wifi) {
    int32_t backup = -1;
    if (!JsonReadInt(simple, "wifi5backup", &backup)) return 0;
    for (int radio : {RADIO_5G, RADIO_2G})
        if (JsonSetInt64(wifi, RADIOS[radio].backup_section, RADIOS[radio].simple[0].cloud, backup) == 0)
            return -1;
    return 0;
}

// The password as the daemon has it, decoded. Empty when it is no Base64 of a text that fits.
void decode_password(const char *encoded, BackupAccount *account) {
    uint8_t plain[sizeof account->password + 2] = {};
    const size_t length = strlen(encoded);
    size_t decoded = 0;
    if (length / 4 * 3 > sizeof plain || base64_decode(encoded, length, plain, &decoded) != 0) return;
    if (decoded >= sizeof account->password || memchr(plain, '\0', decoded) != nullptr) return;
    memcpy(account->password, plain, decoded);
}

} // namespace

int get_backupWifi_config(json_object *document) {
    JsonRoot root;
    json_object *simple = get_dev_info(WIFI_SIMPLE, "get", &root);
    if (simple == nullptr) return -1;
    BackupWifi wifi;
    read_daemon(SAME_SSID, simple, &wifi);
    JsonRoot section(json_object_new_object());
    if (!section || add_rows(SAME_SSID, &wifi, section.get()) != 0) return -1;
    for (int radio : {RADIO_2G, RADIO_5G})
        if (add_radio(radio, simple, section.get()) != 0) return -1;
    if (add_backup_switches(simple, section.get()) != 0) return -1;
    return add_section(document, WIFI, std::move(section));
}

int get_backupMesh_config(json_object *document) {
    JsonRoot root;
    json_object *reply = get_dev_info("vrop.mesh", "get", &root);
    if (reply == nullptr) return -1;
    BackupMesh mesh;
    read_daemon(MESH_BACKUP, reply, &mesh);
    return add_record(document, MESH, MESH_BACKUP, &mesh);
}

int get_backupWeb_config(json_object *document) {
    JsonRoot root;
    json_object *reply = get_dev_info("vrop.devinfo", "getaccount", &root);
    if (reply == nullptr) return -1;
    BackupAccount account;
    read_daemon(ACCOUNT_ROWS, reply, &account);
    decode_password(_json_get_str(reply, "passwd"), &account);
    return add_record(document, ACCOUNT, ACCOUNT_ROWS, &account);
}

int get_backupIptv_config(json_object *document) {
    JsonRoot root;
    json_object *reply = get_dev_info("vrop.iptv", "get", &root);
    json_object *ports = nullptr;
    if (JsonGetObj(reply, IPTV_LIST, &ports) == 0 || !json_object_is_type(ports, json_type_array)) return -1;
    JsonRoot list(json_object_new_array());
    for (size_t i = 0; list && i < json_object_array_length(ports); i++) {
        BackupIptvPort port;
        read_request(IPTV_PORT, json_object_array_get_idx(ports, i), &port);
        JsonRoot element(json_object_new_object());
        if (!element || add_rows(IPTV_PORT, &port, element.get()) != 0) return -1;
        if (JsonAppend(list.get(), std::move(element)) == 0) return -1;
    }
    JsonRoot section(json_object_new_object());
    if (add_section(section.get(), IPTV_LIST, std::move(list)) != 0) return -1;
    return add_section(document, IPTV, std::move(section));
}

JsonRoot get_tunningBackupCfg_config() {
    JsonRoot document(json_object_new_object());
    if (get_backupWifi_config(document.get()) != 0) {
        LOG("get wifi config fail");
        return nullptr;
    }
    if (get_backupInternet_config(document.get()) != 0) {
        LOG("get internet config fail");
        return nullptr;
    }
    if (get_backupMesh_config(document.get()) != 0) LOG("get mesh config fail");
    if (get_backupWeb_config(document.get()) != 0) {
        LOG("get web passwd fail");
        return nullptr;
    }
    if (get_backupIptv_config(document.get()) != 0) LOG("get iptv config fail");
    return document;
}

int tunningBackupCfg_get(char *buffer, int size) {
    if (buffer == nullptr || size < 1) {
        LOG("param is NULL");
        return -1;
    }
    copy_text(buffer, static_cast<size_t>(size), "");
    JsonRoot document = get_tunningBackupCfg_config();
    if (!document) return -1;
    const char *text = json_object_to_json_string_ext(document.get(), JSON_C_TO_STRING_PLAIN |
                                                                          JSON_C_TO_STRING_NOSLASHESCAPE);
    if (text == nullptr || strlen(text) >= static_cast<size_t>(size)) { // half a document is none
        LOG("JsonObj To String fail");
        return -1;
    }
    copy_text(buffer, static_cast<size_t>(size), text);
    return 0;
}
