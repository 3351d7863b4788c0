// SPDX-License-Identifier: Apache-2.0
// The properties "ipv6Status" and "networkProtocol": two views, numbered differently, of the WAN's protocol
// family.
#pragma once

// Slots of the property table.
int ipv6Status_init();
int ipv6Status_set(const char *context, const char *value, char *reply, int reply_length);
int ipv6Status_get(const char *context, char *output, int length);
int networkprotocol_init();
int networkprotocol_set(const char *context, const char *value, char *reply, int reply_length);
int networkprotocol_get(const char *context, char *output, int length);

// "open": 1 when IPv6 is on, also beside IPv4. Written: 0 IPv4, 1 both; -1 for another value or a refusal.
int get_ipv6Status();
int set_ipv6Status(int open);

// "type": 0 both, 1 IPv4, 2 IPv6. -1 from the writer for another value or a refusal.
int networkprotocol_config_get();
int networkprotocol_config_set(int type);
