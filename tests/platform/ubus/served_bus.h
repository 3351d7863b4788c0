// SPDX-License-Identifier: Apache-2.0
// A server on a thread of its own, with the object of the captured traffic and a few more.
#pragma once

#include "platform/ubus/server/ubus_server.h"
#include "scripted_peer.h"

class ServedBus {
  public:
    ServedBus() {
        std::vector<UbusMethod> methods{{"echo",
                                         {{"text", BLOBMSG_TYPE_STRING},
                                          {"count", BLOBMSG_TYPE_INT32},
                                          {"on", BLOBMSG_TYPE_INT8},
                                          {"tbl", BLOBMSG_TYPE_TABLE},
                                          {"arr", BLOBMSG_TYPE_ARRAY}}},
                                        {"many", {}},
                                        {"exit", {}},
                                        {"none", {}}};
        server_.add_object("own.demo", methods, [this](const UbusInvocation &call) { handle(call); });
        server_.add_object("own.any", {}, [this](const UbusInvocation &call) { call.reply(call.json()); });
        server_.add_object("\x7fsorts.last", {}, [](const UbusInvocation &call) { call.status(6); });
        server_.listen(BUS_PATH);
        thread_ = std::jthread([this] { server_.run(); });
    }
    ~ServedBus() { server_.stop(); }
    ServedBus(const ServedBus &) = delete;
    ServedBus &operator=(const ServedBus &) = delete;

  private:
    void handle(const UbusInvocation &call) {
        if (call.method() == "echo") return call.reply(call.json());
        if (call.method() == "many") {
            call.data(R"({"n":1})");
            call.data(R"({"n":2})");
            server_.after(1, [call] {
                call.finish(4);
                call.reply("{}"); // too late
            });
        }
        // the others are never answered
    }

    UbusServer server_;
    std::jthread thread_;
};
