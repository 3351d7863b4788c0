// SPDX-License-Identifier: Apache-2.0
// Bus messages to build and texts that the bus library gives.
#pragma once

#include <string>

extern "C" {
#include <libubox/blobmsg_json.h>
}
// In the way of C++ headers included after this one.
#undef __constructor
#undef fallthrough

// Owns a message, empty or made of JSON text.
struct Buffer : blob_buf {
    explicit Buffer(const std::string &json = "{}") : blob_buf{} {
        blob_buf_init(this, 0);
        blobmsg_add_json_from_string(this, json.c_str());
    }
    ~Buffer() { blob_buf_free(this); }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
};

inline void add_u16(Buffer *message, const char *name, uint16_t value) {
    const uint16_t bytes = cpu_to_be16(value);
    blobmsg_add_field(message, BLOBMSG_TYPE_INT16, name, &bytes, sizeof(bytes));
}

// A text that the library has allocated.
inline std::string take(char *text) {
    std::string copy = text ? text : "(null)";
    free(text);
    return copy;
}
