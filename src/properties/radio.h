// SPDX-License-Identifier: Apache-2.0
// The two radios, 0 for 2.4 GHz and 1 for 5 GHz, and what the daemon calls their parts. Where a function
// gives a name, that is null for another radio.
#pragma once

inline constexpr int RADIO_2G = 0;
inline constexpr int RADIO_5G = 1;
inline constexpr int GUEST_INDEX = 2; // of the guest network among a radio's access points

// The cloud's numbers for them where it names one in a service's request, and the radio that it means: 5 GHz
// for 2, 2.4 GHz for any other number.
inline constexpr int CLOUD_RADIO_2G = 1;
inline constexpr int CLOUD_RADIO_5G = 2;
inline int radio_of(int cloud_radio) {
    return cloud_radio == CLOUD_RADIO_5G ? RADIO_5G : RADIO_2G;
}

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
