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

// A text that the library has allocated.
inline std::string take(char *text) {
    std::string copy = text ? text : "(null)";
    free(text);
    return copy;
}
