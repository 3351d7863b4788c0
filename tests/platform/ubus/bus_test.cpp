// SPDX-License-Identifier: Apache-2.0
// Client and broker together.
#include <fstream>
#include <sys/resource.h>

#include "served_bus.h"
#include "support/text_file.h"

namespace {

// Callers on connections of their own do not meet, the thread sanitizer says so as well.
TEST(Bus, CallsOfSeveralThreadsReachTheirObjectsAndComeBack) {
    struct Row {
        const char *object, *method, *arguments;
        int timeout, status;
        const char *json;
    };
    const Row rows[] = {
        {"own.demo", "echo", R"({"tbl":{"arr":["a",7]}})", LIMIT, 0, R"({"tbl":{"arr":["a",7]}})"},
        {"own.demo", "many", "{}", LIMIT, 4, R"({"n":1}{"n":2})"},
        {"own.demo", "none", "{}", 5, 7, ""},
        {"own.demo", "other", "{}", LIMIT, 3, ""},
        {"own.any", "other", R"({"a":1})", LIMIT, 0, R"({"a":1})"},
        {"\x7fsorts.last", "x", "{}", LIMIT, 6, ""},
    };
    ServedBus bus;
    auto calls = [&rows] {
        Client client(BUS_PATH);
        for (int round = 0; round < 20; round++)
            for (const Row &row : rows) {
                uint32_t id = 0;
                ASSERT_EQ(client.look_up(row.object, &id), 0) << row.object;
                Answer answer = client.call(id, row.method, Buffer(row.arguments).head, row.timeout);
                EXPECT_EQ(answer.status, row.status) << row.method;
                EXPECT_EQ(answer.json, row.json) << row.method;
                EXPECT_EQ(ubus_strerror(100 + round), "Unknown error: " + std::to_string(100 + round));
            }
    };
    std::jthread threads[] = {std::jthread(calls), std::jthread(calls), std::jthread(calls)};
}

TEST(Bus, RefusesClientsThatItHasNoDescriptorsForAndServesTheOthers) {
    ServedBus bus;
    Client client(BUS_PATH);
    uint32_t id = 0;
    ASSERT_EQ(client.look_up("own.any", &id), UBUS_STATUS_OK);
    std::vector<Descriptor> clients;
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit tight{64, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &tight);
    // the client's own end takes the last descriptor, so that its other end finds none
    while (true) {
        Descriptor stream(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (!stream) break;
        clients.push_back(std::move(stream));
    }
    sockaddr_un address{AF_UNIX, {}};
    std::string(BUS_PATH).copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(connect(clients[0].get(), reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
    EXPECT_TRUE(Wire(std::move(clients[0])).drain());
    EXPECT_EQ(client.call(id, "other").status, UBUS_STATUS_OK);
    setrlimit(RLIMIT_NOFILE, &before);
}

TEST(Bus, TakesOverOnlyASocketThatNobodyServes) {
    ServedBus bus;
    UbusServer second;
    EXPECT_THROW(second.listen(BUS_PATH), std::system_error);
    std::ofstream("/tmp/file.sock") << "not a socket";
    EXPECT_THROW(second.listen("/tmp/file.sock"), std::system_error);
    EXPECT_EQ(text_of("/tmp/file.sock"), "not a socket");
    unix_stream("/tmp/abandoned.sock", bind);
    EXPECT_NO_THROW(second.listen("/tmp/abandoned.sock"));
}

} // namespace
