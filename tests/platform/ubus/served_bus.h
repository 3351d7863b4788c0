// SPDX-License-Identifier: Apache-2.0
// A server on a thread of its own, with the object of the captured traffic and a few more.
#pragma once

#include <future>
#include <thread>

#include "platform/ubus/server/ubus_server.h"
#include "scripted_peer.h"

inline constexpr char BUS_PATH[] = "/tmp/bus/ubus.sock";

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
        server.add_object("own.demo", methods, [this](const UbusInvocation &call) { handle(call); });
        server.add_object("own.anything", {}, [](const UbusInvocation &call) { call.reply(call.json()); });
        server.add_object("\x7fsorts.last", {}, [](const UbusInvocation &call) { call.status(6); });
        server.listen(BUS_PATH);
        thread_ = std::thread([this] { server.run(); });
    }
    ~ServedBus() {
        server.stop();
        thread_.join();
    }
    ServedBus(const ServedBus &) = delete;
    ServedBus &operator=(const ServedBus &) = delete;

    // Runs the function on the server's thread.
    template <typename Function>
    auto on_server(Function function) {
        std::packaged_task<decltype(function())()> task(function);
        auto result = task.get_future();
        server.post([&task] { task(); });
        return result.get();
    }
    uint32_t id(const std::string &path) {
        return on_server([&] { return server.object_id(path); });
    }

    UbusServer server;

  private:
    void handle(const UbusInvocation &call) {
        if (call.method() == "echo") return call.reply(call.json());
        if (call.method() == "many") {
            call.data(R"({"n":1})");
            call.data(R"({"n":2})");
            server.after(1, [call] {
                call.finish(4);
                call.reply("{}"); // too late
            });
        }
        if (call.method() == "exit") server.drop_clients();
        // "none" is never answered
    }

    std::thread thread_;
};

inline std::unique_ptr<Wire> connect_wire(const char *path = BUS_PATH) {
    sockaddr_un address;
    auto wire = std::make_unique<Wire>(unix_stream(&address, path));
    EXPECT_EQ(connect(wire->fd(), reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
    return wire;
}
