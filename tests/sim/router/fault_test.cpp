// SPDX-License-Identifier: Apache-2.0
// Faults, recorded calls, restarts of the daemon and of the bus.
#include <chrono>

#include <gtest/gtest.h>

#include "sim/router/bus_caller.h"
#include "sim/router/faults.h"

using router::Fault;

namespace {

constexpr char LED_OFF[] = R"({"status":"off"})";

struct FaultRow {
    Fault fault;
    int status;
    const char *reply;
    const char *led; // afterwards
};

const FaultRow FAULTS[] = {
    {{.kind = Fault::Kind::NoReply}, 7, "", R"("off")"},
    {{.kind = Fault::Kind::Delay, .value = 5}, 0, R"({"result":"0"})", R"("off")"},
    {{.kind = Fault::Kind::Delay, .value = 60000}, 7, "", R"("off")"},
    {{.kind = Fault::Kind::Result, .value = 2}, 0, R"({"result":"2"})", R"("on")"},
    {{.kind = Fault::Kind::Absent}, 4, "", R"("on")"},
    {{.kind = Fault::Kind::Status, .value = 6}, 6, "", R"("on")"},
    {{.kind = Fault::Kind::Reply, .reply = R"({"odd":[1]})"}, 0, R"({"odd":[1]})", R"("on")"},
    {{.kind = Fault::Kind::Result, .object = "vrop.led*", .method = "set", .value = -1},
     0,
     R"({"result":"-1"})",
     R"("on")"},
    {{.kind = Fault::Kind::Result, .object = "vrop.wifi*", .value = 2}, 0, R"({"result":"0"})", R"("off")"},
    {{.kind = Fault::Kind::Result, .method = "get", .value = 2}, 0, R"({"result":"0"})", R"("off")"},
    {{.kind = Fault::Kind::Result, .value = 2, .count = 0}, 0, R"({"result":"0"})", R"("off")"},
};

TEST(Fault, BefallsTheCallsThatItNames) {
    for (std::size_t i = 0; i < std::size(FAULTS); i++) {
        SCOPED_TRACE(i);
        const FaultRow &row = FAULTS[i];
        Home home;
        home.router.add_fault(row.fault);
        BusCaller client;
        client.limit_millis = row.status == 7 ? 100 : 5000;
        EXPECT_EQ(client.call("vrop.ledswitch", "set", LED_OFF), row.reply);
        EXPECT_EQ(client.status, row.status);
        EXPECT_EQ(home.router.value("/vrop.ledswitch/status"), row.led);
        home.router.clear_faults();
        EXPECT_EQ(client.call("vrop.ledswitch", "set", LED_OFF), R"({"result":"0"})");
    }
}

TEST(Fault, EndsAfterItsCountAndTheNextOneFollows) {
    Home home;
    BusCaller client;
    for (const char *arguments : {R"({"kind":"result","value":2,"object":"vrop.led*","count":1})",
                                  R"({"kind":"status=8 vrop.led* set 1"})"})
        ASSERT_EQ(client.call("sim", "fault", arguments), R"({"result":"0"})");
    EXPECT_EQ(client.call("vrop.ledswitch", "set", LED_OFF), R"({"result":"2"})");
    client.call("vrop.ledswitch", "set", LED_OFF);
    EXPECT_EQ(client.status, 8);
    EXPECT_EQ(client.call("vrop.ledswitch", "set", LED_OFF), R"({"result":"0"})");
}

TEST(Fault, MakesObjectsAbsentUntilItIsCleared) {
    Home home;
    BusCaller client;
    EXPECT_EQ(client.call("sim", "fault", R"({"kind":"absent","object":"*"})"), R"({"result":"0"})");
    EXPECT_EQ(client.id("vrop.ftinfo"), 0U);
    EXPECT_NE(client.id("sim"), 0U);
    EXPECT_EQ(client.call("sim", "clear"), R"({"result":"0"})");
    EXPECT_NE(client.id("vrop.ftinfo"), 0U);
}

struct TextRow {
    const char *text;
    Fault::Kind kind;
    int value;
    const char *object, *method, *reply;
    int count;
};

TEST(Fault, IsReadFromText) {
    const TextRow rows[] = {
        {"no_reply", Fault::Kind::NoReply, 0, "*", "*", "{}", -1},
        {"delay=300 vrop.wifi*", Fault::Kind::Delay, 300, "vrop.wifi*", "*", "{}", -1},
        {"result=-2  vrop.timer add 3", Fault::Kind::Result, -2, "vrop.timer", "add", "{}", 3},
        {R"(reply={"a": [1, 2]} vrop set)", Fault::Kind::Reply, 0, "vrop", "set", R"({"a":[1,2]})", -1},
    };
    for (const TextRow &row : rows) {
        SCOPED_TRACE(row.text);
        const Fault fault = router::parse_fault(row.text);
        EXPECT_EQ(fault.kind, row.kind);
        EXPECT_EQ(fault.value, row.value);
        EXPECT_EQ(fault.object, row.object);
        EXPECT_EQ(fault.method, row.method);
        EXPECT_EQ(fault.reply, row.reply);
        EXPECT_EQ(fault.count, row.count);
    }
    for (const char *text : {"", "explode", "delay=soon", "reply=[1] vrop", "result=2 vrop set often"})
        EXPECT_THROW(router::parse_fault(text), std::runtime_error) << text;
}

TEST(Calls, AreRecordedInOrderWithTheirArguments) {
    Home home;
    BusCaller client;
    client.call("vrop.ledswitch", "set", R"({"status":"off"})");
    client.call("sim", "wan", R"({"status":"down"})");
    client.call("vrop.waninfo", "get");
    client.call("vrop.webwifi1adv", "set", R"({"txpower":40,"channel":-1})");
    std::vector<router::Call> calls = home.router.calls();
    ASSERT_EQ(calls.size(), 3U); // those to "sim" are not the daemon's
    EXPECT_EQ(calls[0].object + " " + calls[0].method + " " + calls[0].arguments,
              R"(vrop.ledswitch set {"status":"off"})");
    EXPECT_EQ(calls[1].arguments, "{}");
    EXPECT_EQ(home.router.calls("vrop.web*", "set").at(0).arguments, R"({"txpower":40,"channel":-1})");
    EXPECT_EQ(client.call_for("sim", "calls", "/calls/0/method", R"({"object":"vrop.waninfo"})"), R"("get")");
    EXPECT_TRUE(home.router.wait_for_calls(3));
    EXPECT_FALSE(home.router.wait_for_calls(4, "*", "*", std::chrono::milliseconds(1)));
    home.router.clear_calls();
    EXPECT_TRUE(home.router.calls().empty());
}

TEST(Restart, OfTheDaemonGivesNewIdsAndKeepsTheState) {
    Home home;
    BusCaller client;
    client.call("vrop.ledswitch", "set", LED_OFF);
    const uint32_t before = client.id("vrop.ledswitch");
    home.router.restart();
    const uint32_t after = client.id("vrop.ledswitch");
    EXPECT_NE(after, 0U);
    EXPECT_NE(after, before);
    EXPECT_EQ(client.call_for("vrop.ledswitch", "get", "/vrop.ledswitch/status"), R"("off")");
}

TEST(Restart, OfTheBusDropsItsClients) {
    Home home;
    BusCaller client;
    EXPECT_NE(client.id("vrop.ledswitch"), 0U);
    home.router.restart(true);
    EXPECT_EQ(client.id("vrop.ledswitch"), 0U);
    home.router.stop();
    EXPECT_FALSE(BusCaller().connected());
    home.router.start();
    BusCaller again;
    EXPECT_NE(again.id("vrop.ledswitch"), 0U);
}

} // namespace
