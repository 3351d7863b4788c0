// SPDX-License-Identifier: Apache-2.0
// A client's calls and what came of them.
#pragma once

#include <memory>
#include <string>

#include <libubus.h>
extern "C" {
#include <libubox/blobmsg_json.h>
}
// In the way of C++ headers included after this one.
#undef __constructor
#undef fallthrough

struct ContextFree {
    void operator()(ubus_context *context) const { ubus_free(context); }
};
using Context = std::unique_ptr<ubus_context, ContextFree>;

struct Answer {
    int status = -1;
    std::string json; // of each DATA, one behind the other
};

inline void collect_json(ubus_request *req, int, blob_attr *message) {
    char *text = blobmsg_format_json(message, true);
    *static_cast<std::string *>(req->priv) += text ? text : "(no memory)";
    free(text);
}

inline Answer invoke(ubus_context *context, uint32_t object, const char *method, const char *json,
                     int timeout) {
    Answer answer;
    blob_buf arguments{};
    blob_buf_init(&arguments, 0);
    if (json) blobmsg_add_json_from_string(&arguments, json);
    answer.status = ubus_invoke(context, object, method, json ? arguments.head : nullptr, collect_json,
                                &answer.json, timeout);
    blob_buf_free(&arguments);
    return answer;
}
