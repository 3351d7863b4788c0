// SPDX-License-Identifier: Apache-2.0
// Encryption codes of the cloud, 0 to 5, and the daemon's texts for them. Any thread.
#pragma once

// The texts, each at its code.
inline constexpr const char *WIFI_AUTHMODES[] = {
    "NONE", "WPA-PSK", "WPA2-PSK", "WPA-PSK/WPA2-PSK", "WPA3-SAE", "WPA2-PSK/WPA3-SAE",
};

// Code of a text: exact match; an unknown text counts as 3 ("WPA-PSK/WPA2-PSK"), null gives -1.
int get_report_encrytion(const char *authmode);

// Text of a code, cut to size - 1 characters; a code without a text gives that of 3. 0, or -1 for a null
// buffer or a size below 1.
int get_set_encrytion(int code, char *authmode, int size);
