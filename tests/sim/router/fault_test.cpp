// SPDX-License-Identifier: Apache-2.0
// Faults and recorded calls.
#include "sim/router/bus_caller.h"
#include "sim/router/faults.h"

namespace {

const std::string LED_OFF = R"(vrop.ledswitch set {"status":"off"})";

struct FaultRow {
    const char *fault;
    int status;
    const char *reply, *led; // the LEDs afterwards
};

TEST(Fault, BefallsTheCallsThatItNames) {
    const FaultRow rows[] = {
        {"no_reply", 7, "", "off"},
        {"delay=5", 0, DONE, "off"},
        {"delay=60000", 7, "", "off"},
        {"result=2", 0, R"({"result":"2"})", "on"},
        {"absent", 4, "", "on"},
        {"status=6", 6, "", "on"},
        {R"(reply={"odd": [1, 2]} vrop* set)", 0, R"({"odd":[1,2]})", "on"},
        {"result=-1  vrop.led* set", 0, R"({"result":"-1"})", "on"},
        {"result=2 vrop.wifi*", 0, DONE, "off"},
        {"result=2 * get", 0, DONE, "off"},
        {"result=2 * * 0", 0, DONE, "off"},
    };
    for (const FaultRow &row : rows) {
        SCOPED_TRACE(row.fault);
        router::Router router;
        router.start();
        router.add_fault(router::parse_fault(row.fault));
        BusCaller client;
        EXPECT_EQ(client.call(LED_OFF, row.status == 7 ? 100 : 5000), row.reply);
        EXPECT_EQ(client.status, row.status);
        EXPECT_EQ(router.value("/vrop.ledswitch/status"), '"' + std::string(row.led) + '"');
        router.clear_faults();
        EXPECT_EQ(client.call(LED_OFF), DONE);
    }
    for (const char *text : {"", "explode", "delay=soon", "reply=[1] vrop", "result=2 vrop set often"})
        EXPECT_THROW(router::parse_fault(text), std::runtime_error) << text;
}

TEST(Fault, ComesFromTheBusAndEndsAfterItsCountOrWhenItIsCleared) {
    router::Router router;
    router.start();
    BusCaller client;
    EXPECT_EQ(client.call(R"(sim fault {"kind":"result","value":2,"object":"vrop.led*","count":1})"), DONE);
    EXPECT_EQ(client.call(R"(sim fault {"kind":"status=8 vrop.led* set 1"})"), DONE);
    EXPECT_EQ(client.call(LED_OFF), R"({"result":"2"})");
    EXPECT_EQ(client.call(LED_OFF), "");
    EXPECT_EQ(client.status, 8);
    EXPECT_EQ(client.call(LED_OFF), DONE);
    EXPECT_EQ(client.call(R"(sim fault {"kind":"absent","object":"*"})"), DONE);
    EXPECT_EQ(client.id("vrop.ftinfo"), 0U);
    EXPECT_EQ(client.call("sim clear"), DONE);
    EXPECT_NE(client.id("vrop.ftinfo"), 0U);
}

TEST(Calls, AreRecordedButThoseToTheSimulation) {
    router::Router router;
    router.start();
    BusCaller client;
    client.call(R"(vrop.webwifi1adv set {"txpower":40,"channel":-1})");
    client.call("vrop.waninfo get");
    const std::string calls = R"({"calls":[{"object":"vrop.waninfo","method":"get","arguments":{}}]})";
    EXPECT_EQ(client.call(R"(sim calls {"object":"vrop.wan*"})"), calls);
    EXPECT_EQ(router.calls("vrop.web*", "set").at(0).arguments, R"({"txpower":40,"channel":-1})");
    EXPECT_TRUE(router.wait_for_calls(2));
    EXPECT_FALSE(router.wait_for_calls(3, "*", "*", std::chrono::milliseconds(1)));
    EXPECT_EQ(client.call("sim clearcalls"), DONE);
    EXPECT_TRUE(router.calls().empty());
}

} // namespace
