// SPDX-License-Identifier: Apache-2.0
// Bytes, written as hex text with blanks wherever they help, and messages to build.
#pragma once

#include <gtest/gtest.h>
#include <random>
#include <string>

extern "C" {
#include <libubox/blobmsg_json.h>
}
// In the way of C++ headers included after this one.
#undef __constructor
#undef fallthrough

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

// Owns a message, empty or made of JSON text.
struct Buffer : blob_buf {
    explicit Buffer(const char *json = "{}") : blob_buf{} {
        EXPECT_EQ(blob_buf_init(this, 0), 0);
        blobmsg_add_json_from_string(this, json);
    }
    ~Buffer() { blob_buf_free(this); }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
};

// A text that the library has allocated.
inline std::string take(char *text) {
    std::string copy = text ? text : "(null)";
    free(text);
    return copy;
}
