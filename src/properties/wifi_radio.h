// SPDX-License-Identifier: Apache-2.0
// Single settings of a radio (0 or 1, see radio.h) and of both. Writers return the daemon's result, 0 when it
// took the change, and -1 for another radio; readers -1 for another radio or no answer. Any thread.
#pragma once

// Both main networks as one object.
inline constexpr char WIFI_SIMPLE[] = "vrop.webwifisimple";

int get_wifi_hidden(int radio); // the radio's "hide"
int get_wifi_wifi5Backup();     // the 5 GHz backup switch
int set_wifi_wifi5Backup(int backup);
int set_wifi_use2_4gpwd(int use);

// Writes a radio's encryption code and hidden flag; code 1 leaves the encryption as it is. -1 also for hidden
// -1.
int set_encrytion_and_hidden(int radio, int encryption, int hidden);

// A radio's own texts for its encryption.
struct RadioEncryption {
    char authmode[128];
    char encrypt[128];
};
int get_wifisenior_config(int radio, RadioEncryption *encryption);
int set_wifisenior_config(int radio, const RadioEncryption *encryption);
