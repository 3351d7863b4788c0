// SPDX-License-Identifier: Apache-2.0
// What the Wi-Fi subjects share.
#pragma once

#include "sim/router/world.h"

namespace router {

inline constexpr char AUTHMODES[] = "NONE|WPA-PSK|WPA2-PSK|WPA-PSK/WPA2-PSK|WPA3-SAE|WPA2-PSK/WPA3-SAE";

constexpr Field ssid(const char *name) {
    return text(name, 1, 32);
}
constexpr Field key(const char *name) {
    return text(name, 0, 63);
}
constexpr Field authmode(const char *name) {
    return choice(name, AUTHMODES);
}
// Tells the daemon to wait with restarting the radio; a simulated one has none to restart.
constexpr Field NOT_YET = steering(flag("noteffectflag"));

// Refuses a key that is too short for the protection that the network will have; a call without a key passes,
// since the protection may be changed first and the key after it.
void check_key(const World &world, const Request &request, const std::string &place, const char *key_name,
               const char *authmode_name);

} // namespace router
