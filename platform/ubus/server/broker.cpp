// SPDX-License-Identifier: Apache-2.0
#include "broker.h"

#include "invocation.h"

namespace {
// Answers go with the number and the peer of their request.
void answer(BusClient *client, const wire::Header &request, ubus_msg_type type, const blob_attr *body) {
    client->send({UBUS_MSG_VERSION, static_cast<uint8_t>(type), request.seq, request.peer}, body);
}

void answer_status(BusClient *client, const wire::Header &request, ubus_msg_status status) {
    MessageBuilder message;
    message.number(UBUS_ATTR_STATUS, status);
    answer(client, request, UBUS_MSG_STATUS, message.body());
}

void add_signature(blob_buf *buffer, const std::vector<UbusMethod> &methods) {
    void *signature = blob_nest_start(buffer, UBUS_ATTR_SIGNATURE);
    for (const UbusMethod &method : methods) {
        void *table = blobmsg_open_table(buffer, method.name.c_str());
        for (const auto &[name, type] : method.arguments)
            blobmsg_add_u32(buffer, name.c_str(), static_cast<uint32_t>(type));
        blobmsg_close_table(buffer, table);
    }
    blob_nest_end(buffer, signature);
}

void answer_object(BusClient *client, const wire::Header &request, const BusObject &object) {
    MessageBuilder message;
    message.text(UBUS_ATTR_OBJPATH, object.path)
        .number(UBUS_ATTR_OBJID, object.id)
        .number(UBUS_ATTR_OBJTYPE, object.type_id);
    add_signature(message.buffer(), object.methods);
    answer(client, request, UBUS_MSG_DATA, message.body());
}
} // namespace

void Broker::lookup(BusClient *client, const wire::Message &message) {
    const blob_attr *attr = wire::Attributes(message.body()).at[UBUS_ATTR_OBJPATH];
    std::string path = attr ? blob_get_string(attr) : "*";
    if (path.empty()) return answer_status(client, message.header, UBUS_STATUS_INVALID_ARGUMENT);
    std::vector<const BusObject *> found;
    if (path.ends_with('*'))
        found = objects_->by_prefix(path.substr(0, path.size() - 1));
    else if (const BusObject *object = objects_->by_path(path))
        found.push_back(object);
    for (const BusObject *object : found)
        answer_object(client, message.header, *object);
    answer_status(client, message.header, attr && found.empty() ? UBUS_STATUS_NOT_FOUND : UBUS_STATUS_OK);
}

void Broker::invoke(const std::shared_ptr<BusClient> &client, const wire::Message &message) {
    wire::Attributes attributes(message.body());
    if (!attributes.at[UBUS_ATTR_OBJID] || !attributes.at[UBUS_ATTR_METHOD])
        return answer_status(client.get(), message.header, UBUS_STATUS_INVALID_ARGUMENT);
    const BusObject *object = objects_->by_id(attributes.number(UBUS_ATTR_OBJID));
    if (!object) return answer_status(client.get(), message.header, UBUS_STATUS_NOT_FOUND);

    std::string method = blob_get_string(attributes.at[UBUS_ATTR_METHOD]);
    const blob_attr *arguments = attributes.at[UBUS_ATTR_DATA];
    UbusInvocation invocation = UbusInvocation::Call::make(client, {0, 0, message.header.seq, object->id},
                                                           object->path, method, arguments);
    if (!object->takes(method)) return invocation.status(UBUS_STATUS_METHOD_NOT_FOUND);
    if (!arguments) return invocation.status(UBUS_STATUS_INVALID_ARGUMENT);
    UbusServer::Handler handler = object->handler; // it may remove its object
    handler(invocation);
}

void Broker::handle(const std::shared_ptr<BusClient> &client, const wire::Message &message) {
    switch (message.header.type) {
    case UBUS_MSG_LOOKUP:
        return lookup(client.get(), message);
    case UBUS_MSG_INVOKE:
        return invoke(client, message);
    case UBUS_MSG_PING:
        answer(client.get(), message.header, UBUS_MSG_DATA, message.body());
        return answer_status(client.get(), message.header, UBUS_STATUS_OK);
    case UBUS_MSG_STATUS:
    case UBUS_MSG_DATA:
        return; // answers of an owner, which no client is here
    default:
        return answer_status(client.get(), message.header, UBUS_STATUS_INVALID_COMMAND);
    }
}
