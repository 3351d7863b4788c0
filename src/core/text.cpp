// SPDX-License-Identifier: Apache-2.0
#include "core/text.h"

#include <cstring>

void copy_text(char *to, size_t size, const char *from) {
    if (to == nullptr || size == 0) return;
    size_t length = from == nullptr ? 0 : strnlen(from, size - 1);
    if (length > 0) memmove(to, from, length);
    to[length] = '\0';
}

MacBytes mac_from_hex(const char *digits) {
    MacBytes mac = {};
    unsigned *b = mac.byte;
    if (digits != nullptr)
        sscanf(digits, "%02x%02x%02x%02x%02x%02x", &b[0], &b[1], &b[2], &b[3], &b[4], &b[5]);
    for (unsigned &byte : mac.byte)
        byte &= 0xff; // "-1" is two characters that read as more than a byte
    return mac;
}

Text<13> mac_lower_hex(const char *digits) {
    MacBytes mac = mac_from_hex(digits);
    const unsigned *b = mac.byte;
    return format_text<13>("%02x%02x%02x%02x%02x%02x", b[0], b[1], b[2], b[3], b[4], b[5]);
}

int set_colon_mac(const char *digits, char *to, int size) {
    if (digits == nullptr || to == nullptr || size < 2) return -1;
    MacBytes mac = mac_from_hex(digits);
    const unsigned *b = mac.byte;
    return snprintf(to, static_cast<size_t>(size) - 1, "%02X:%02X:%02X:%02X:%02X:%02X", b[0], b[1], b[2],
                    b[3], b[4], b[5]);
}

void util_strip_blank_of_string_end(char *text) {
    if (text == nullptr) return;
    size_t length = strlen(text);
    while (length > 0 && strchr(" \t\r\n", text[length - 1]) != nullptr)
        length--;
    text[length] = '\0';
}

void lowercasestr_capitalstr(char *text) {
    for (; text != nullptr && *text != '\0'; text++)
        if (*text >= 'a' && *text <= 'z') *text = static_cast<char>(*text - 'a' + 'A');
}
