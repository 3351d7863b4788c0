// SPDX-License-Identifier: Apache-2.0
// Present rates of the attached devices, in bytes per second. "down" is what a device receives. Any thread.
#pragma once

#include <string>

// How many stations of the daemon's list count.
inline constexpr int DEVICES_MAX = 128;

// The rates of one device as {"upSpeed": n, "downSpeed": n, "networkStatus":n}, cut to length - 1 characters;
// networkStatus is the station's "active". The MAC is compared with the first 15 characters of the daemon's,
// as the device list holds them; the first `device_count` stations count. 0; -1 when there is no such device,
// when it is offline, or when the list cannot be read.
int get_one_lanDeviceInfo(const char *mac, int device_count, char *output, int length);

// {"monitorSpeeds":[{"mac","upSpeed","downSpeed","networkStatus"}]}: every active device, in the daemon's
// order. 0; -1 when the list cannot be read.
int get_lanDeviceInfo(std::string *document);
