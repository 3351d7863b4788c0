// SPDX-License-Identifier: Apache-2.0
// The router's way to the Internet in the daemon's terms. The caller keeps other threads away from the
// record.
#pragma once

#include "properties/network_info.h"

// Reads the daemon into the record. 0; -1, with what could be read, for a null record or no answer.
int get_network_config(NetworkRecord *network);

// Writers, from the record's members of that kind: the daemon's result, 0 when it took the change. A refusal
// is logged.
int bridge_set();
int dhcp_set(const NetworkRecord &network);
int ppoe_set(const NetworkRecord &network);
int static_set(const NetworkRecord &network);
int relay_set(const NetworkRecord &network); // -1 without a call for a radio that is neither 0 nor 1

// 1 when the text holds a comma, and so two servers; 0 when not; -1 for null.
int cut_dns(const char *text);
