// SPDX-License-Identifier: Apache-2.0
// Bytes written as hex text, blanks and line ends free.
#pragma once

#include <cstdio>
#include <string>

inline std::string from_hex(const std::string &text) {
    std::string digits, bytes;
    for (char c : text)
        if (isxdigit(static_cast<unsigned char>(c))) digits += c;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

inline std::string to_hex(const void *data, size_t length) {
    std::string text;
    for (size_t i = 0; i < length; i++) {
        char pair[4];
        snprintf(pair, sizeof(pair), "%02x", static_cast<const unsigned char *>(data)[i]);
        text += (i % 4 == 0 && i > 0 ? " " : "") + std::string(pair);
    }
    return text;
}

inline std::string to_hex(const std::string &bytes) {
    return to_hex(bytes.data(), bytes.size());
}
