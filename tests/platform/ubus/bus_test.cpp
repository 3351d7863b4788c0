// SPDX-License-Identifier: Apache-2.0
// Client and broker together.
#include "client_rig.h"
#include "served_bus.h"

namespace {

constexpr int LIMIT = 5000;

TEST(Bus, CallsReachTheirObjectsAndComeBack) {
    ServedBus bus;
    Context context(ubus_connect(BUS_PATH));
    ASSERT_TRUE(context);
    struct Row {
        const char *object, *method, *arguments;
        int timeout, status;
        const char *json;
    };
    const Row rows[] = {
        {"own.demo", "echo", R"({"text":"hi","tbl":{"arr":["a",7]}})", LIMIT, 0,
         R"({"text":"hi","tbl":{"arr":["a",7]}})"},
        {"own.demo", "many", "{}", LIMIT, 4, R"({"n":1}{"n":2})"},
        {"own.demo", "none", "{}", 30, 7, ""},
        {"own.demo", "other", "{}", LIMIT, 3, ""},
        {"own.anything", "other", R"({"a":1})", LIMIT, 0, R"({"a":1})"},
        {"\x7fsorts.last", "x", "{}", LIMIT, 6, ""},
    };
    for (const Row &row : rows) {
        uint32_t id = 0;
        ASSERT_EQ(ubus_lookup_id(context.get(), row.object, &id), 0) << row.object;
        Answer answer = invoke(context.get(), id, row.method, row.arguments, row.timeout);
        EXPECT_EQ(answer.status, row.status) << row.method;
        EXPECT_EQ(answer.json, row.json) << row.method;
    }
}

TEST(Bus, RestartsAreSeenByClients) {
    ServedBus bus;
    Context context(ubus_connect(BUS_PATH));
    uint32_t before = bus.id("own.demo");
    bus.on_server([&] { bus.server.renumber(); });
    uint32_t after = 0;
    EXPECT_EQ(invoke(context.get(), before, "echo", "{}", LIMIT).status, UBUS_STATUS_NOT_FOUND);
    EXPECT_EQ(ubus_lookup_id(context.get(), "own.demo", &after), UBUS_STATUS_OK);
    EXPECT_NE(after, before);
    EXPECT_EQ(invoke(context.get(), bus.id("own.demo"), "exit", "{}", LIMIT).status,
              UBUS_STATUS_CONNECTION_FAILED);
    EXPECT_EQ(bus.on_server([&] { return bus.server.client_count(); }), 0U);
}

TEST(Bus, TakesOverOnlyASocketThatNobodyServes) {
    ServedBus bus;
    UbusServer second;
    EXPECT_THROW(second.listen(BUS_PATH), std::system_error);
    sockaddr_un address;
    int abandoned = unix_stream(&address, "/tmp/abandoned.sock");
    ASSERT_EQ(bind(abandoned, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
    close(abandoned);
    EXPECT_NO_THROW(second.listen("/tmp/abandoned.sock"));
}

// Callers on connections of their own do not meet; for the thread sanitizer.
TEST(Bus, SeveralThreadsCallAtOnce) {
    ServedBus bus;
    std::thread threads[3];
    for (int i = 0; i < 3; i++) {
        threads[i] = std::thread([i] {
            Context context(ubus_connect(BUS_PATH));
            uint32_t id = 0;
            ASSERT_EQ(ubus_lookup_id(context.get(), "own.demo", &id), 0);
            std::string text = R"({"text":")" + std::string(1000, static_cast<char>('a' + i)) + "\"}";
            for (int call = 0; call < 200; call++)
                ASSERT_EQ(invoke(context.get(), id, "echo", text.c_str(), LIMIT).json, text);
            EXPECT_STREQ(ubus_strerror(100 + i), ("Unknown error: " + std::to_string(100 + i)).c_str());
        });
    }
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace
