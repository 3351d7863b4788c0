// SPDX-License-Identifier: Apache-2.0
// The properties "wifi2gSeniorInfo" and "wifi5gSeniorInfo": power, bandwidth, channel, mode and encryption of
// a radio, in the daemon's own terms.
#pragma once

#include <cstdint>

struct WifiSenior {
    int32_t txpower;
    int32_t bandwidth;
    char authmode[32];
    char mode[16];
    char encrypt[16];
    int32_t channel;
};

// Slots of the property table.
int wifi2g_senior_config_init();
int wifi2g_senior_config_set(const char *context, const char *value, char *reply, int reply_length);
int wifi2g_senior_config_get(const char *context, char *output, int length);
int wifi5g_senior_config_init();
int wifi5g_senior_config_set(const char *context, const char *value, char *reply, int reply_length);
int wifi5g_senior_config_get(const char *context, char *output, int length);

// Post a changed document; in no table.
int wifi2g_senior_config_report();
int wifi5g_senior_config_report();

// Reads a radio (0 or 1, see radio.h). 0, with a zeroed record when the daemon does not answer; -1 for a null
// record or another radio. Any thread.
int wifi_senior_config_get(int radio, WifiSenior *senior);
// Writes a radio; the daemon decides what it accepts and its result is returned. -1 for a null record or
// another radio.
int wifi_senior_config_set(int radio, const WifiSenior *senior);
