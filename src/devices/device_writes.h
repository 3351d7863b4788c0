// SPDX-License-Identifier: Apache-2.0
// Single settings of a client device, written to the daemon: its name, its limits, a timed disconnection. A
// null or empty MAC and null texts are logged ("param is NULL") and give -1; else the daemon's result. Any
// thread.
#pragma once

#include <cstdint>

struct SpeedLimit {
    int32_t open;
    int32_t upSpeed, downSpeed; // in the daemon's unit; 0 and -1 leave the daemon's as it is
};

int set_apDevice_name(const char *name, const char *mac);
int set_limitSpeed(const SpeedLimit &limit, const char *mac);

// Disconnects a device from now on: code 2 for 600 s, 3 for 1800 s, 4 for 3600 s, another until it is
// released; 0 releases it. The daemon takes this of supervised devices.
int set_disconnectInfo(int32_t disconnect, const char *mac, const char *name);
