// SPDX-License-Identifier: Apache-2.0
#include "sim/router/bus_caller.h"

#include <libubus.h>
#undef fallthrough
extern "C" {
#include <libubox/blobmsg_json.h>
}

#include "sim/router/json.h"

namespace {

void keep_reply(ubus_request *request, int, blob_attr *message) {
    char *text = blobmsg_format_json(message, true);
    *static_cast<std::string *>(request->priv) = text;
    free(text);
}

} // namespace

BusCaller::BusCaller(const char *socket) : context(ubus_connect(socket)) {}

BusCaller::~BusCaller() {
    ubus_free(context);
}

uint32_t BusCaller::id(const std::string &object) {
    uint32_t id = 0;
    status = ubus_lookup_id(context, object.c_str(), &id);
    return status == 0 ? id : 0;
}

std::string BusCaller::call(const std::string &object, const std::string &method,
                            const std::string &arguments) {
    const uint32_t target = id(object);
    if (status != 0) return "";
    blob_buf buffer{};
    blob_buf_init(&buffer, 0);
    std::string reply;
    if (blobmsg_add_json_from_string(&buffer, arguments.c_str()))
        status = ubus_invoke(context, target, method.c_str(), buffer.head, keep_reply, &reply, limit_millis);
    else
        status = UBUS_STATUS_INVALID_ARGUMENT;
    blob_buf_free(&buffer);
    return reply;
}

std::string BusCaller::call_for(const std::string &object, const std::string &method,
                                const std::string &pointer, const std::string &arguments) {
    return at(call(object, method, arguments), pointer);
}

std::string at(const std::string &json, const std::string &pointer) {
    JsonRoot root(json_tokener_parse(json.c_str()));
    json_object *value = nullptr;
    if (!root || json_pointer_get(root.get(), pointer.c_str(), &value) != 0) return "";
    return router::json_text(value);
}
