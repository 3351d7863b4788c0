// SPDX-License-Identifier: Apache-2.0
// A client of the bus: its calls and what came of them.
#pragma once

#include <memory>
#include <string>

#include <libubus.h>
#undef fallthrough

#include "support/blob_buffer.h"

inline constexpr int LIMIT = 5000; // milliseconds, for calls that are answered

struct Answer {
    int status;
    std::string json; // of each DATA, one behind the other
};

struct Client {
    explicit Client(const char *path) : context(ubus_connect(path), ubus_free) {}
    Answer call(uint32_t object, const char *method, blob_attr *arguments = nullptr, int timeout = LIMIT) {
        std::string json;
        auto collect = [](ubus_request *req, int, blob_attr *message) {
            *static_cast<std::string *>(req->priv) += take(blobmsg_format_json(message, true));
        };
        int status = ubus_invoke(context.get(), object, method, arguments, collect, &json, timeout);
        return {status, json};
    }
    // The object's id, which is left alone when it is not found.
    int look_up(const char *path, uint32_t *id) { return ubus_lookup_id(context.get(), path, id); }

    std::shared_ptr<ubus_context> context;
};
