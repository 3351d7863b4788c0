// SPDX-License-Identifier: Apache-2.0
// Bounded copies and small text helpers.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

// Copies `from` (null counts as empty) into a buffer of `size` bytes, cut to size - 1 characters, always
// terminated. A size of 0 writes nothing.
void copy_text(char *to, size_t size, const char *from);

// The same for an array, whose size its type knows.
template <size_t N>
void copy_text(char (&to)[N], const char *from) {
    copy_text(to, N, from);
}

// A formatted text in a buffer of its own, cut to N - 1 characters: format_text<128>("%s %d", ...).text
template <size_t N>
struct Text {
    char text[N];
};
template <size_t N>
__attribute__((format(printf, 1, 2))) Text<N> format_text(const char *format, ...) {
    Text<N> result;
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(result.text, N, format, arguments);
    va_end(arguments);
    return result;
}

// The six bytes of a MAC written as twelve hex digits without separators; a byte that cannot be read stays 0,
// and so do those behind it. Null counts as empty.
struct MacBytes {
    unsigned byte[6];
};
MacBytes mac_from_hex(const char *digits);
// The twelve lower-case digits again.
Text<13> mac_lower_hex(const char *digits);

// "a1b2c3d4e5f6" to "A1:B2:C3:D4:E5:F6", at most size - 2 characters. Returns what snprintf returns, or -1
// for a null argument or a size below 2.
int set_colon_mac(const char *digits, char *to, int size);

// The integer that a text begins with, blanks before it aside; what 32 bits cannot hold becomes the nearest
// that they can. `otherwise` when there is none, and for null.
int leading_integer(const char *text, int otherwise = 0);

// Removes trailing spaces, tabs, carriage returns and line feeds in place; null is ignored.
void util_strip_blank_of_string_end(char *text);

// Removes blanks and control characters around a text, in place; null is ignored.
void delete_strip_string_extra_characters(char *text);

// Shortens a text to `most` bytes where it is longer, between UTF-8 characters: at most three bytes less.
void cut_between_characters(std::string *text, size_t most);

// The text with each byte that is not part of a UTF-8 character (RFC 3629) replaced by U+FFFD; "" for null.
std::string utf8_text(const char *text);

// Turns the ASCII lower-case letters of `text` into capitals, in place; null is ignored.
void lowercasestr_capitalstr(char *text);
