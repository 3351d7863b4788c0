// SPDX-License-Identifier: Apache-2.0
// The backup document: what a restore reads from it, and the codes in it. Its members are optional; a number
// of -1 and an empty text are values that the document does not give.
#pragma once

#include <cstddef>
#include <cstdint>

#include <json-c/json.h>

#include "properties/radio.h"

inline constexpr size_t BACKUP_DOCUMENT_SIZE = 2048; // one document and its terminator

struct BackupRadio {
    int32_t status = -1; // of 2.4 GHz alone; with any other than 1, `enable` is not looked at
    int32_t enable = -1;
    char ssid[64] = {};
    char key[64] = {};
    int32_t beacon_type = -1; // see get_realBeaconType
    int32_t encryption = -1;
    int32_t channel = -1;
    int32_t bandwidth = -1;
};

struct BackupWifi {
    int32_t same_ssid = -1;
    BackupRadio radio[2]; // see radio.h
    int32_t backup_enable[2] = {-1, -1};
};

enum BackupRouterMode : int32_t { BACKUP_BRIDGE = 0, BACKUP_ROUTER = 1, BACKUP_RELAY = 2 };
enum BackupSubMode : int32_t { BACKUP_DHCP = 0, BACKUP_STATIC = 1, BACKUP_PPPOE = 2 };
enum BackupIpMode : int32_t { BACKUP_IPV4 = 1, BACKUP_IPV6 = 2, BACKUP_IP_BOTH = 3 };
inline constexpr int32_t BACKUP_PREFIX_STATIC = 2;
inline constexpr int32_t BACKUP_SOURCE_STATIC = 1;

struct BackupInternet {
    int32_t router_mode = -1;
    int32_t sub_mode = -1;
    int32_t ip_mode = -1;
    // the relay
    char essid[64] = {};
    char password[64] = {};
    int32_t radio_type = -1;
    int32_t authmode = -1; // see get_realBeaconType
    // IPv4
    char ip_address[16] = {};
    char sub_mask[16] = {};
    char gateway[16] = {};
    int32_t dns_enable = -1;
    char dns[3][16] = {};
    // IPv6
    int32_t address6_source = -1;
    int32_t gateway6_source = -1;
    int32_t dns6_source = -1;
    int32_t prefix_source = -1;
    char address6[64] = {};
    char gateway6[64] = {};
    char dns6[128] = {};
    char prefix_delegation[48] = {};
    char prefix[48] = {};
    int32_t prefix_length = -1;
    // PPPoE
    int32_t mtu = -1;
    char pppoe_username[128] = {};
    char pppoe_password[64] = {};
};

struct BackupMesh {
    int32_t enable = -1;
    int32_t role = -1;
};

struct BackupIptvPort {
    int32_t enable = -1;
    int32_t vlan_id = -1;
    int32_t interfaces[3] = {-1, -1, -1};
};

struct BackupIptv {
    static constexpr size_t MOST = 2; // of a longer list nothing is read
    int32_t count = -1;
    BackupIptvPort ports[MOST];
};

struct BackupAccount {
    char username[128] = {};
    char password[64] = {}; // plain
};

struct BackupRecord {
    BackupWifi wifi;
    BackupInternet internet;
    BackupMesh mesh;
    BackupIptv iptv;
    BackupAccount account;
};

// Fills a fresh record from a document. Sections and members of another type than expected count as absent.
// Any thread.
void read_backup_document(json_object *document, BackupRecord *record);

// The daemon's text for one of the encryption codes of wifi_encryption.h; null for another one.
const char *get_realBeaconType(int32_t code);
