// SPDX-License-Identifier: Apache-2.0
// "rssiQualityCheck": how well the wireless stations are heard.
#pragma once

#include <cstdint>

// Request {"mac"}, twelve hexadecimal digits with or without colons, or absent for all wireless stations.
// Answers 200
// {"devices":[{"mac","name","radio","rssi","quality"}]}: radio 1 (2.4 GHz) or 2 (5 GHz), rssi in dBm, quality
// 0 from -65 dBm, 1 from -75, else 2. A station that is away, wired or unknown is not in the list. 400 "{}"
// for another text, or when the router does not tell its stations.
int rssiQualityCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
