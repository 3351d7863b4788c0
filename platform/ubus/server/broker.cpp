// SPDX-License-Identifier: Apache-2.0
#include "broker.h"

#include "invocation.h"

namespace {
enum Status { OK = 0, INVALID_COMMAND = 1, INVALID_ARGUMENT = 2, METHOD_NOT_FOUND = 3, NOT_FOUND = 4 };

// Answers go with the number and the peer of their request.
void answer(BusClient *client, const wire::Header &request, wire::Type type, const blob_attr *body) {
    client->send({0, type, request.seq, request.peer}, body);
}

void answer_status(BusClient *client, const wire::Header &request, Status status) {
    MessageBuilder message;
    message.number(wire::ATTR_STATUS, status);
    answer(client, request, wire::STATUS, message.body());
}

void add_signature(blob_buf *buffer, const std::vector<UbusMethod> &methods) {
    void *signature = blob_nest_start(buffer, wire::ATTR_SIGNATURE);
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
    message.text(wire::ATTR_OBJPATH, object.path)
        .number(wire::ATTR_OBJID, object.id)
        .number(wire::ATTR_OBJTYPE, object.type_id);
    add_signature(message.buffer(), object.methods);
    answer(client, request, wire::DATA, message.body());
}
} // namespace

void Broker::lookup(BusClient *client, const wire::Message &message) {
    const blob_attr *attr = wire::Attributes(message.body()).at[wire::ATTR_OBJPATH];
    std::string path = attr ? blob_get_string(attr) : "*";
    if (path.empty()) return answer_status(client, message.header, INVALID_ARGUMENT);
    std::vector<const BusObject *> found;
    if (path.ends_with('*'))
        found = objects_->by_prefix(path.substr(0, path.size() - 1));
    else if (const BusObject *object = objects_->by_path(path))
        found.push_back(object);
    for (const BusObject *object : found)
        answer_object(client, message.header, *object);
    answer_status(client, message.header, attr && found.empty() ? NOT_FOUND : OK);
}

void Broker::invoke(const std::shared_ptr<BusClient> &client, const wire::Message &message) {
    wire::Attributes attributes(message.body());
    if (!attributes.at[wire::ATTR_OBJID] || !attributes.at[wire::ATTR_METHOD])
        return answer_status(client.get(), message.header, INVALID_ARGUMENT);
    const BusObject *object = objects_->by_id(attributes.number(wire::ATTR_OBJID));
    if (!object) return answer_status(client.get(), message.header, NOT_FOUND);

    std::string method = blob_get_string(attributes.at[wire::ATTR_METHOD]);
    const blob_attr *arguments = attributes.at[wire::ATTR_DATA];
    UbusInvocation invocation = UbusInvocation::Call::make(client, {0, 0, message.header.seq, object->id},
                                                           object->path, method, arguments);
    if (!object->takes(method)) return invocation.status(METHOD_NOT_FOUND);
    if (!arguments) return invocation.status(INVALID_ARGUMENT);
    UbusServer::Handler handler = object->handler; // it may remove its object
    handler(invocation);
}

void Broker::handle(const std::shared_ptr<BusClient> &client, const wire::Message &message) {
    switch (message.header.type) {
    case wire::LOOKUP:
        return lookup(client.get(), message);
    case wire::INVOKE:
        return invoke(client, message);
    case wire::PING:
        answer(client.get(), message.header, wire::DATA, message.body());
        return answer_status(client.get(), message.header, OK);
    case wire::STATUS:
    case wire::DATA:
        return; // answers of an owner, which no client is here
    default:
        return answer_status(client.get(), message.header, INVALID_COMMAND);
    }
}
