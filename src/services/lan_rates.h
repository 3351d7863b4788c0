// SPDX-License-Identifier: Apache-2.0
// Present rates of the attached devices, in bytes per second. "down" is what a device receives. Any thread.
#pragma once

#include <string>

// The rates of one device as {"upSpeed": n, "downSpeed": n, "networkStatus":n}, cut to length - 1 characters;
// networkStatus is 1 for a device that is connected, which all are that are answered. The MAC is to be
// spelled as the daemon's, of which 15 characters count; the first `device_count` devices are looked at. 0;
// -1 when there is no such device, when it is offline, or when the list cannot be read.
int get_one_lanDeviceInfo(const char *mac, int device_count, char *output, int length);

// {"monitorSpeeds": [{"mac", "upSpeed", "downSpeed", "networkStatus"}]}: every active device, in the daemon's
// order. 0; -1 when the list cannot be read.
int get_lanDeviceInfo(std::string *document);
