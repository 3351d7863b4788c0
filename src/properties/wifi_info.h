// SPDX-License-Identifier: Apache-2.0
// The property "wifiInfo": the main wireless networks of both radios, or both under one name, the 5 GHz
// backup switch and the switch that makes 5 GHz use the 2.4 GHz password.
#pragma once

#include <cstdint>

struct WifiRecord {
    int32_t sames_open; // both bands under one name
    int32_t open_2g;
    char name_2g[33];
    char pwd_2g[33];
    int32_t encryption_2g; // code, see wifi_encryption.h
    int32_t hidden_2g;
    int32_t open_5g;
    char name_5g[33];
    char pwd_5g[33];
    int32_t encryption_5g;
    int32_t hidden_5g;
    int32_t sames; // the merged network is on
    int32_t sames_hidden;
    char sames_name[33];
    char sames_pwd[33];
    int32_t use_2g_pwd;
    int32_t backup_open;
};

// Slots of the property table.
int wifiInfo_init();
int wifiInfo_set(const char *context, const char *value, char *reply, int reply_length);
int wifiInfo_get(const char *context, char *output, int length);
int wifiInfo_report();

// Refreshes a record from the daemon. 0, also when the daemon does not answer (fields then 0); -1 for a null
// record.
int get_wifi_config(WifiRecord *wifi);
