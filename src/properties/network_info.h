// SPDX-License-Identifier: Apache-2.0
// The property "networkInfo": how the router reaches the Internet: as a bridge, as a router with PPPoE, DHCP
// or a static address, or as a wireless relay. A mesh work mode is reported, not set here.
#pragma once

#include <cstdint>

struct NetworkRecord {
    int32_t network_mode; // 0 bridge, 1 route, 2 relay, 3 mesh
    int32_t mesh_mode;    // kept for the document, not applied
    int32_t route_type;   // 0 PPPoE, 1 DHCP, 2 static
    int32_t relay_radio;  // see radio.h
    int32_t sync;         // keep the Wi-Fi up while the relay connects
    char relay_name[64];
    char relay_pwd[64];
    int32_t relay_encryption; // code, see wifi_encryption.h
    char user_name[128];
    char user_pwd[64];
    int32_t mtu;
    int32_t ppoe_dns_enable;
    char ppoe_dns1[16];
    char ppoe_dns2[16];
    char static_ip[16];
    char static_mask[16];
    char static_gateway[16];
    char static_dns1[16];
    char static_dns2[16];
    int32_t dhcp_dns_enable;
    char dhcp_dns1[16];
    char dhcp_dns2[16];
};

// Slots of the property table.
int networkInfo_init();
int networkInfo_set(const char *context, const char *value, char *reply, int reply_length);
int networkInfo_get(const char *context, char *output, int length);

// Posts a changed document; in no table.
int networkInfo_report();
