// SPDX-License-Identifier: Apache-2.0
// The backup document's members and the daemon's, each pair in one row that serves backup and restore. The
// order is that of the daemon's messages.
#pragma once

#include <cstring>
#include <iterator>

#include "properties/field.h"
#include "properties/wifi_encryption.h"
#include "services/backup_document.h"

namespace backup {

inline constexpr char WIFI[] = "WiFiCfg";
inline constexpr char INTERNET[] = "InternetCfg";
inline constexpr char MESH[] = "MESHCfg";
inline constexpr char IPTV[] = "IPTVCfg";
inline constexpr char IPTV_LIST[] = "cfg_list"; // the daemon's name as well
inline constexpr char ACCOUNT[] = "UserPwdCfg";

// Texts of the daemon's, each at its code in the document.
inline constexpr const char *CIPHERS[] = {"NONE", "AES", "TKIP", "TKIP/AES"};
inline constexpr const char *SOURCES6[] = {"DHCPv6", "Static"}; // see BACKUP_SOURCE_STATIC
inline constexpr const char *PREFIX_SOURCES[] = {"None", "PrefixDelegation", "Static"};

// A code's text; null without one. And the other direction: -1 for null and for other texts.
template <const auto &TEXTS>
const char *text_in(int32_t code) {
    return code >= 0 && code < static_cast<int32_t>(std::size(TEXTS)) ? TEXTS[code] : nullptr;
}
template <const auto &TEXTS>
int32_t code_in(const char *text) {
    for (size_t code = 0; text != nullptr && code < std::size(TEXTS); code++)
        if (strcmp(text, TEXTS[code]) == 0) return static_cast<int32_t>(code);
    return -1;
}

// WiFiCfg
inline constexpr Field SAME_SSID[] = {FIELD(Integer, BackupWifi, same_ssid, "SameSSIDStatus", "wifidual")};

// A radio's section, its name and its switch among the backup networks, and its rows of both networks'
// settings.
struct RadioRows {
    const char *section;
    const char *backup_section;
    Field status[1]; // only in the document
    Field simple[3];
};
inline constexpr RadioRows RADIOS[] = {
    {"wifi_cfg_24G",
     "wifi5_cfg_24G",
     {FIELD(Integer, BackupRadio, status, "RadioStatus", nullptr)},
     {FIELD(Integer, BackupRadio, enable, "Enable", "wifi24apenable"),
      FIELD(Text, BackupRadio, ssid, "ESSID", "wifi24ssid"),
      FIELD(Text, BackupRadio, key, "KeyPassphrase", "wifi24key")}},
    {"wifi_cfg_5G",
     "wifi5_cfg_5G",
     {},
     {FIELD(Integer, BackupRadio, enable, "Enable", "wifi5apenable"),
      FIELD(Text, BackupRadio, ssid, "ESSID", "wifi5ssid"),
      FIELD(Text, BackupRadio, key, "KeyPassphrase", "wifi5key")}},
};

// The members of a radio's advanced settings that a document has.
inline constexpr Field SENIOR[] = {
    FIELD(Integer, BackupRadio, bandwidth, "BandWidth", "bandwidth"),
    FIELD(Integer, BackupRadio, channel, "Channel", "channel"),
    FIELD(Integer, BackupRadio, encryption, "Encryption", "encrypt", code_in<CIPHERS>, text_in<CIPHERS>),
    FIELD(Integer, BackupRadio, beacon_type, "BeaconType", "authmode", code_in<WIFI_AUTHMODES>,
          get_realBeaconType),
};

// InternetCfg
inline constexpr Field MODES[] = {
    FIELD(Integer, BackupInternet, router_mode, "RouterMode", nullptr),
    FIELD(Integer, BackupInternet, sub_mode, "SubMode", nullptr),
    FIELD(Integer, BackupInternet, ip_mode, "IPMode", nullptr),
};
inline constexpr Field RELAY[] = {
    FIELD(Text, BackupInternet, essid, "ESSID", "ssid"),
    FIELD(Text, BackupInternet, password, "PassWord", "key"),
    FIELD(Integer, BackupInternet, authmode, "authmode", "authmode", code_in<WIFI_AUTHMODES>,
          get_realBeaconType),
    FIELD(Integer, BackupInternet, radio_type, "RadioType", nullptr),
};
inline constexpr Field PPPOE[] = {
    FIELD(Text, BackupInternet, pppoe_username, "PPPoEUsername", "pppoename"),
    FIELD(Text, BackupInternet, pppoe_password, "PPPoEPassword", "pppoepwd"),
    FIELD(Integer, BackupInternet, mtu, "MTU", "pppoemtu"),
};
inline constexpr Field ADDRESS4[] = {
    FIELD(Text, BackupInternet, ip_address, "IpAddress", "ipaddr"),
    FIELD(Text, BackupInternet, sub_mask, "SubMask", "subnetmask"),
    FIELD(Text, BackupInternet, gateway, "Gateway", "gateway"),
};
// The daemon has the servers in one text, "dns".
inline constexpr Field DNS4[] = {
    FIELD(Switch, BackupInternet, dns_enable, "DNSEnable", "dnsenable"),
    FIELD(Text, BackupInternet, dns[0], "DNS1", nullptr),
    FIELD(Text, BackupInternet, dns[1], "DNS2", nullptr),
    FIELD(Text, BackupInternet, dns[2], "DNS3", nullptr),
};
inline constexpr Field ADDRESS6[] = {
    FIELD(Text, BackupInternet, address6, "Gua1", "ipv6addr"),
    FIELD(Text, BackupInternet, gateway6, "Gateway6", "gateway6"),
};
inline constexpr Field DNS6_SOURCE[] = {
    FIELD(Integer, BackupInternet, dns6_source, "DNSv6Src", "dns6type", code_in<SOURCES6>, text_in<SOURCES6>),
};
inline constexpr Field DNS6[] = {FIELD(Text, BackupInternet, dns6, "DNSv6", "dns6")};
inline constexpr Field PREFIX_SOURCE[] = {
    FIELD(Integer, BackupInternet, prefix_source, "PrefixSrc", "ipv6prefixOrigin", code_in<PREFIX_SOURCES>,
          text_in<PREFIX_SOURCES>),
};
inline constexpr Field PREFIX_DELEGATION[] = {
    FIELD(Text, BackupInternet, prefix_delegation, "PrefixDelegation", "ipv6prefix6"),
};
inline constexpr Field PREFIX[] = {FIELD(Text, BackupInternet, prefix, "Prefix1", "ipv6prefix6")};
inline constexpr Field PREFIX_LENGTH[] = {
    FIELD(Integer, BackupInternet, prefix_length, "Prefix1Len", "ipv6prefixlen6"),
};
// Where address and gateway come from: one setting of the daemon's, only read there.
inline constexpr Field ADDRESS6_SOURCE[] = {
    FIELD(Integer, BackupInternet, address6_source, "GUASrc", "ipv6type", code_in<SOURCES6>,
          text_in<SOURCES6>),
};
inline constexpr Field GATEWAY6_SOURCE[] = {
    FIELD(Integer, BackupInternet, gateway6_source, "Gatewayv6Src", "ipv6type", code_in<SOURCES6>,
          text_in<SOURCES6>),
};

// MESHCfg. A backup and a restore spell the members differently, so that a document that the agent made does
// not touch the mesh; the cloud relies on both spellings.
inline constexpr Field MESH_BACKUP[] = {
    FIELD(Switch, BackupMesh, enable, "enable", "enable"),
    FIELD(Integer, BackupMesh, role, "role", "role"),
};
inline constexpr Field MESH_RESTORE[] = {
    FIELD(Integer, BackupMesh, enable, "Enable", "enable"),
    FIELD(Integer, BackupMesh, role, "DeviceRole", "role"),
};

// IPTVCfg: an element of the list, which the daemon gives under the document's names and takes under its own;
// the interfaces go as one text, "ethport".
inline constexpr Field IPTV_PORT[] = {
    FIELD(Integer, BackupIptvPort, enable, "Enable", "enable"),
    FIELD(Integer, BackupIptvPort, vlan_id, "VlanID", "vlanid"),
    FIELD(Integer, BackupIptvPort, interfaces[0], "Interface1", nullptr),
    FIELD(Integer, BackupIptvPort, interfaces[1], "Interface2", nullptr),
    FIELD(Integer, BackupIptvPort, interfaces[2], "Interface3", nullptr),
};

// UserPwdCfg. The daemon has the password in Base64.
inline constexpr Field ACCOUNT_ROWS[] = {
    FIELD(Text, BackupAccount, username, "Username", "user"),
    FIELD(Text, BackupAccount, password, "Password", nullptr),
};

} // namespace backup
