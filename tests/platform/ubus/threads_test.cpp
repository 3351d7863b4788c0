// SPDX-License-Identifier: Apache-2.0
// Callers on connections of their own do not meet, the thread sanitizer says so as well.
#include <thread>

#include <gtest/gtest.h>

#include "platform/ubus/server/ubus_server.h"
#include "support/bus_client.h"

namespace {

constexpr char BUS_PATH[] = "/tmp/bus.sock";

TEST(Bus, CallsOfSeveralThreadsReachTheirObjectsAndComeBack) {
    const struct {
        const char *method;
        int timeout, status;
        const char *json;
    } rows[] = {{"echo", LIMIT, 0, R"({"tbl":{"arr":["a",7]}})"},
                {"many", LIMIT, 4, R"({"n":1}{"n":2})"},
                {"none", 5, 7, ""},
                {"other", LIMIT, 3, ""}};
    UbusServer server;
    server.add_object("own", {{"echo", {}}, {"many", {}}, {"none", {}}}, [&](const UbusInvocation &call) {
        if (call.method() == "echo") return call.reply(call.json());
        if (call.method() == "none") return;
        call.data(R"({"n":1})");
        call.data(R"({"n":2})");
        server.after(1, [call] {
            call.finish(4);
            call.reply("{}"); // too late
        });
    });
    server.listen(BUS_PATH);
    std::jthread serving([&] { server.run(); });
    auto calls = [&rows] {
        Client client(BUS_PATH);
        for (int round = 0; round < 20; round++)
            for (const auto &row : rows) {
                uint32_t id = 0;
                ASSERT_EQ(client.look_up("own", &id), 0);
                Answer answer = client.call(id, row.method, Buffer(rows[0].json).head, row.timeout);
                EXPECT_EQ(answer.status, row.status) << row.method;
                EXPECT_EQ(answer.json, row.json) << row.method;
                EXPECT_EQ(ubus_strerror(100 + round), "Unknown error: " + std::to_string(100 + round));
            }
    };
    { std::jthread threads[] = {std::jthread(calls), std::jthread(calls), std::jthread(calls)}; }
    server.stop();
}

} // namespace
