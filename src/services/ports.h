// SPDX-License-Identifier: Apache-2.0
// "portLinkSpeed": link, speed and duplex of the router's wired ports.
#pragma once

#include <cstdint>

// Answers 200 {"ports":[{"name","link","speed","duplex"}]}, sorted by name: speed in Mbit/s, 0 without link
// or where the driver does not tell; duplex "full", "half" or "unknown". A port is a wired interface with
// hardware behind it, as Linux shows them in /sys/class/net (Documentation/ABI/testing/sysfs-class-net).
int portLinkSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
