// SPDX-License-Identifier: Apache-2.0
#include "core/text.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
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

int leading_integer(const char *text, int otherwise) {
    if (text == nullptr) return otherwise;
    char *end = nullptr;
    const long long number = strtoll(text, &end, 10);
    return end == text ? otherwise : static_cast<int>(std::clamp(number, 0LL + INT_MIN, 0LL + INT_MAX));
}

void util_strip_blank_of_string_end(char *text) {
    if (text == nullptr) return;
    size_t length = strlen(text);
    while (length > 0 && strchr(" \t\r\n", text[length - 1]) != nullptr)
        length--;
    text[length] = '\0';
}

void delete_strip_string_extra_characters(char *text) {
    if (text == nullptr) return;
    const auto is_extra = [](char c) { return static_cast<unsigned char>(c) <= ' ' || c == '\x7f'; };
    char *start = text, *end = text + strlen(text);
    while (start < end && is_extra(*start))
        start++;
    while (end > start && is_extra(end[-1]))
        end--;
    memmove(text, start, static_cast<size_t>(end - start));
    text[end - start] = '\0';
}

void cut_between_characters(std::string *text, size_t most) {
    if (text->size() <= most) return;
    size_t length = most;
    while (length > 0 && (static_cast<unsigned char>((*text)[length]) & 0xC0) == 0x80)
        length--;
    text->resize(length);
}

// The bytes of the UTF-8 character beyond ASCII that a text begins with; 0 when it begins with none.
static size_t character_length(const unsigned char *text) {
    // first bytes from, to; the second byte from, to; bytes in all
    static constexpr unsigned char FORMS[][5] = {
        {0xc2, 0xdf, 0x80, 0xbf, 2}, {0xe0, 0xe0, 0xa0, 0xbf, 3}, {0xe1, 0xec, 0x80, 0xbf, 3},
        {0xed, 0xed, 0x80, 0x9f, 3}, {0xee, 0xef, 0x80, 0xbf, 3}, {0xf0, 0xf0, 0x90, 0xbf, 4},
        {0xf1, 0xf3, 0x80, 0xbf, 4}, {0xf4, 0xf4, 0x80, 0x8f, 4},
    };
    for (const auto &[first, last, low, high, length] : FORMS) {
        if (text[0] < first || text[0] > last || text[1] < low || text[1] > high) continue;
        size_t whole = 2;
        while (whole < length && (text[whole] & 0xc0) == 0x80)
            whole++;
        return whole == length ? length : 0;
    }
    return 0;
}

std::string utf8_text(const char *text) {
    std::string clean;
    while (text != nullptr && *text != '\0') {
        size_t plain = 0; // documents are ASCII for the most part
        while (static_cast<signed char>(text[plain]) > 0)
            plain++;
        clean.append(text, plain);
        text += plain;
        if (*text == '\0') break;
        const size_t length = character_length(reinterpret_cast<const unsigned char *>(text));
        clean.append(length == 0 ? "\xef\xbf\xbd" : text, length == 0 ? 3 : length);
        text += length == 0 ? 1 : length;
    }
    return clean;
}

void lowercasestr_capitalstr(char *text) {
    for (; text != nullptr && *text != '\0'; text++)
        if (*text >= 'a' && *text <= 'z') *text = static_cast<char>(*text - 'a' + 'A');
}
