// SPDX-License-Identifier: Apache-2.0
// The two radios, 0 for 2.4 GHz and 1 for 5 GHz, and what the daemon calls their parts. Each function gives
// null for another radio.
#pragma once

inline constexpr int RADIO_2G = 0;
inline constexpr int RADIO_5G = 1;
inline constexpr int GUEST_INDEX = 2; // of the guest network among a radio's access points

inline const char *radio_object(int radio, const char *first, const char *second) {
    return radio == RADIO_2G ? first : radio == RADIO_5G ? second : nullptr;
}
// Advanced settings of the radio.
inline const char *radio_settings(int radio) {
    return radio_object(radio, "vrop.webwifi1adv", "vrop.webwifi2adv");
}
// The radio itself, and what it measures.
inline const char *radio_device(int radio) {
    return radio_object(radio, "vrop.wifi.1", "vrop.wifi.2");
}
// The radio's access points, one of which is the guest network.
inline const char *radio_access_points(int radio) {
    return radio_object(radio, "vrop.wifi.1.ap.modify", "vrop.wifi.2.ap.modify");
}
// The radio as client of another access point.
inline const char *radio_client(int radio) {
    return radio_object(radio, "vrop.wifi.1.apclient", "vrop.wifi.2.apclient");
}
