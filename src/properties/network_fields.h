// SPDX-License-Identifier: Apache-2.0
// The members of each way to the Internet, in the document's order; shared by reading and writing.
#pragma once

#include "properties/field.h"
#include "properties/network_info.h"
#include "properties/wifi_encryption.h"

// Network modes and route types of the cloud.
enum NetworkMode : int32_t { MODE_BRIDGE = 0, MODE_ROUTE = 1, MODE_RELAY = 2, MODE_MESH = 3 };
enum RouteType : int32_t { ROUTE_PPPOE = 0, ROUTE_DHCP = 1, ROUTE_STATIC = 2 };

inline constexpr Field PPPOE_FIELDS[] = {
    FIELD(Text, NetworkRecord, user_name, "userName", "pppoename"),
    FIELD(Text, NetworkRecord, user_pwd, "userPwd", "pppoepwd"),
    FIELD(Integer, NetworkRecord, mtu, "mtu", "pppoemtu"),
    FIELD(Switch, NetworkRecord, ppoe_dns_enable, "dnsEnable", "dnsenable"),
    FIELD(Text, NetworkRecord, ppoe_dns1, "dns1", nullptr),
    FIELD(Text, NetworkRecord, ppoe_dns2, "dns2", nullptr),
};
inline constexpr Fields PPPOE_LOGIN = Fields(PPPOE_FIELDS).first(3);

inline constexpr Field DHCP_FIELDS[] = {
    FIELD(Switch, NetworkRecord, dhcp_dns_enable, "dnsEnable", "dnsenable"),
    FIELD(Text, NetworkRecord, dhcp_dns1, "dns1", nullptr),
    FIELD(Text, NetworkRecord, dhcp_dns2, "dns2", nullptr),
};

inline constexpr Field STATIC_FIELDS[] = {
    FIELD(Text, NetworkRecord, static_ip, "staticIp", "ipaddr"),
    FIELD(Text, NetworkRecord, static_mask, "mask", "subnetmask"),
    FIELD(Text, NetworkRecord, static_gateway, "gateWay", "gateway"),
    FIELD(Text, NetworkRecord, static_dns1, "dns1", nullptr),
    FIELD(Text, NetworkRecord, static_dns2, "dns2", nullptr),
};

inline constexpr Field RELAY_FIELDS[] = {
    FIELD(Text, NetworkRecord, relay_name, "manualWifiName", "ssid"),
    FIELD(Text, NetworkRecord, relay_pwd, "manualWifiPwd", "key"),
    FIELD(Integer, NetworkRecord, relay_encryption, "manualEncrytion", "authmode", get_report_encrytion),
    FIELD(Integer, NetworkRecord, sync, "sync", "relay"),
    FIELD(Integer, NetworkRecord, relay_radio, "relaySignal", nullptr),
};
inline constexpr Fields RELAY_LOGIN = Fields(RELAY_FIELDS).first(2);
