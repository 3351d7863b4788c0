// SPDX-License-Identifier: Apache-2.0
// A call on its way to a handler and back.
#pragma once

#include <cstdlib>

#include "bus_client.h"
#include "ubus_server.h"

struct FreeBytes {
    void operator()(void *bytes) const { free(bytes); }
};

struct UbusInvocation::Call {
    std::weak_ptr<BusClient> client;
    wire::Header header; // of the answers
    std::string object;
    std::string method;
    std::string json;
    bool finished = false;

    static UbusInvocation make(const std::shared_ptr<BusClient> &client, wire::Header header,
                               const std::string &object, const std::string &method,
                               const blob_attr *arguments);
    bool send(ubus_msg_type type, const blob_attr *body);
};
