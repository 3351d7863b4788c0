// SPDX-License-Identifier: Apache-2.0
// The bus that the simulated router serves, under peers that break it or do not read.
#include <gmock/gmock.h>

#include "platform/ubus/scripted_peer.h"
#include "sim/router/router.h"

namespace {

const std::string LOOK_UP = "00040001 00000000 00000018 02000013 76726f70 2e6c6564 73776974 63680000"_hex;

struct Bus : testing::Test {
    Bus() { router.start(BUS_PATH); }

    // A connection that has been greeted.
    static Wire connected() {
        Wire wire(unix_stream(BUS_PATH, connect));
        EXPECT_EQ(wire.receive_message().size(), 12U);
        return wire;
    }
    // The attribute that holds the LEDs' id.
    static std::string id_of_leds() {
        const Wire wire = connected();
        wire.send(LOOK_UP);
        return wire.receive_message().substr(LOOK_UP.size(), 8);
    }

    router::Router router;
};

TEST_F(Bus, ClosesOnFrameErrorsAndSurvivesAnyBytes) {
    for (const std::string &frame : {"00030001 00000000 00000003"_hex, "00030001 00000000 00100001"_hex}) {
        const Wire wire = connected();
        wire.send(frame);
        EXPECT_EQ(wire.receive_message(), "");
    }
    const std::string id = id_of_leds(), invoke = "00050002 00000000 00000018"_hex + id;
    const std::string good = LOOK_UP + invoke + "04000008 67657400 07000004"_hex;
    std::mt19937 random(99);
    for (int round = 0; round < 400; round++) {
        const Wire wire = connected();
        wire.send(damaged(good, random));
        wire.finish();
        wire.drain();
    }
    EXPECT_EQ(id.substr(0, 4), "03000008"_hex);
    EXPECT_EQ(id_of_leds(), id);
}

// What is got is whole, and memory stays bounded.
TEST_F(Bus, DropsMessagesForAClientThatDoesNotRead) {
    const std::string ping = "00030009 00000000 00010000 0b00fffc"_hex + std::string(65528, 'p');
    const Wire wire = connected();
    for (int i = 0; i < 200; i++)
        wire.send(ping);
    int whole = 0;
    std::string answer;
    while (!answer.starts_with("00010001"_hex)) {
        wire.send("00030001 00000000 00000004"_hex); // until there is room for its answer again
        answer = wire.receive_message();
        ASSERT_THAT(answer.size(), testing::AnyOf(ping.size(), 20U, 12U));
        whole += answer.size() == ping.size();
    }
    EXPECT_TRUE(16 <= whole && whole < 200) << whole;
}

} // namespace
