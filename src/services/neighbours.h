// SPDX-License-Identifier: Apache-2.0
// "relayScan": the networks around, as candidates for the router's own uplink.
#pragma once

#include <cstdint>

// Request {"radio"}: 0 (2.4 GHz) or 1 (5 GHz), as the relay's radio of "networkInfo". Answers 200
// {"relayList":[{"ssid","bssid","channel","rssi","encryption"}]}: strongest first, each bssid once, without
// hidden networks, at most 64; rssi in dBm, encryption 0 to 5 as of the Wi-Fi settings. 400 "{}" for another
// radio or when the scan fails. set_flag is up while the radio scans.
int relayScan_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
