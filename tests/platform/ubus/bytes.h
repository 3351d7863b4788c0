// SPDX-License-Identifier: Apache-2.0
// Bytes, written as hex text with blanks wherever they help.
#pragma once

#include <gtest/gtest.h>
#include <random>
#include <string>

#include "support/blob_buffer.h"

inline std::string operator""_hex(const char *digits, size_t length) {
    std::string text(digits, length), bytes;
    std::erase(text, ' ');
    for (size_t i = 0; i < text.size(); i += 2)
        bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
    return bytes;
}

// The bytes with up to seven of them changed.
inline std::string damaged(std::string bytes, std::mt19937 &random) {
    for (auto changes = random() % 8; changes > 0; changes--)
        bytes[random() % bytes.size()] = static_cast<char>(random());
    return bytes;
}
