// SPDX-License-Identifier: Apache-2.0
#include "invocation.h"

namespace {
std::string json_of(const blob_attr *arguments) {
    std::unique_ptr<char, FreeBytes> text(
        arguments ? blobmsg_format_json(const_cast<blob_attr *>(arguments), true) : nullptr);
    return text ? text.get() : "{}";
}
} // namespace

UbusInvocation UbusInvocation::Call::make(const std::shared_ptr<BusClient> &client, wire::Header header,
                                          const std::string &object, const std::string &method,
                                          const blob_attr *arguments) {
    UbusInvocation invocation;
    invocation.call = std::make_shared<Call>();
    invocation.call->client = client;
    invocation.call->header = header;
    invocation.call->object = object;
    invocation.call->method = method;
    invocation.call->json = json_of(arguments);
    return invocation;
}

bool UbusInvocation::Call::send(ubus_msg_type type, const blob_attr *body) {
    std::shared_ptr<BusClient> caller = client.lock();
    if (finished || !caller) return true;
    header.type = static_cast<uint8_t>(type);
    return caller->send(header, body);
}

const std::string &UbusInvocation::object() const {
    return call->object;
}

const std::string &UbusInvocation::method() const {
    return call->method;
}

const std::string &UbusInvocation::json() const {
    return call->json;
}

bool UbusInvocation::data(const std::string &json) const {
    MessageBuilder message;
    message.number(UBUS_ATTR_OBJID, call->header.peer);
    void *content = blob_nest_start(message.buffer(), UBUS_ATTR_DATA);
    bool built = blobmsg_add_json_from_string(message.buffer(), json.c_str());
    blob_nest_end(message.buffer(), content);
    return built && call->send(UBUS_MSG_DATA, message.body());
}

void UbusInvocation::finish(int code) const {
    MessageBuilder message;
    message.number(UBUS_ATTR_STATUS, static_cast<uint32_t>(code)).number(UBUS_ATTR_OBJID, call->header.peer);
    call->send(UBUS_MSG_STATUS, message.body());
    call->finished = true;
}

void UbusInvocation::reply(const std::string &json) const {
    finish(data(json) ? 0 : UBUS_STATUS_UNKNOWN_ERROR);
}
