// SPDX-License-Identifier: Apache-2.0
// The services that tell how strong a radio transmits and whether others disturb it. In a request 2 is the
// 5 GHz radio and any other number the 2.4 GHz one; null and what is no JSON get no answer. For the service
// table: called by the SDK from any thread; the two arguments in the middle are not used.
#pragma once

#include <cstdint>

// Request {"wifiSignal": radio}. 200 {"signal"}, see classify_power; no answer, and set_flag left up, when
// the daemon does not answer. set_flag is up meanwhile.
int checkSignal_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"wifiSignal": radio, 2.4 GHz when absent}. 200 {"interference": others disturb it}. set_flag is up
// meanwhile.
int wifi_interference_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"radio"}. 200 {"noise", "interference"} in the daemon's units, or 400 "{}" when it does not
// answer.
int wirelessInterference_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

// The class of a transmit power: 0 for 61 and more, 1 for 41 to 60, 2 for less.
int classify_power(int txpower);

// What the daemon says of the band; any thread. get_interferencepercent: 1 when 80 or more is disturbed, 0
// when less, -1 when the daemon does not answer. get_interference: both values as the daemon gives them, one
// that is missing as it was; 0, or -1 when it does not answer.
int get_interferencepercent(int radio);
int get_interference(int radio, int *noise, int *interference);
