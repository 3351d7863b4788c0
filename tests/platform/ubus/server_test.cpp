// SPDX-License-Identifier: Apache-2.0
// The broker against raw connections, byte for byte.
#include <random>

#include "served_bus.h"

namespace {

std::string number_hex(uint32_t number) {
    char text[9];
    snprintf(text, sizeof(text), "%08x", number);
    return text;
}

std::string replaced(std::string text, const std::string &from, const std::string &to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

// Captured traffic with this run's object id.
std::string with_id(const std::string &hex, uint32_t id) {
    return replaced(hex, number_hex(captured::OBJECT_ID), number_hex(id));
}

std::unique_ptr<Wire> greeted() {
    auto wire = connect_wire();
    std::string hello = to_hex(wire->receive(12));
    EXPECT_EQ(hello.substr(0, 9), "00000000 ");
    EXPECT_EQ(hello.substr(17), " 00000004");
    return wire;
}

TEST(UbusServer, SpeaksTheCapturedSession) {
    ServedBus bus;
    uint32_t id = bus.id("own.demo");
    ASSERT_GE(id, 1024U);
    auto wire = greeted();
    wire->send_hex(captured::LOOKUP);
    std::string expected = to_hex(from_hex(with_id(captured::LOOKUP_DATA, id)));
    std::string data = to_hex(wire->receive_message());
    size_t type = expected.find(number_hex(captured::TYPE_ID));
    EXPECT_EQ(data.replace(type, 8, "b6fdd90c"), expected);
    wire->expect_hex(captured::LOOKUP_STATUS);
    wire->send_hex(with_id(captured::INVOKE_ECHO, id));
    // What went through JSON lost its 16-bit integer (86 00 00 0a, 2 bytes) to a 32-bit one.
    std::string echo = with_id(captured::ECHO_DATA, id);
    echo = replaced(echo, "8600000a 00017700 02010000", "8500000c 00017700 00000201");
    wire->expect_hex(echo);
    wire->expect_hex(with_id(captured::ECHO_STATUS, id));
    wire->send_hex(captured::LOOKUP_UNKNOWN);
    wire->expect_hex(captured::UNKNOWN_STATUS);
    wire->send_hex("00050006 0000004d 00000014 03000008 0000004d 04000006 6d000000");
    wire->expect_hex(captured::NO_OBJECT_STATUS);
}

TEST(UbusServer, AnswersEachRequestWithItsStatus) {
    ServedBus bus;
    std::string id = number_hex(bus.id("own.demo"));
    struct Row {
        const char *what;
        std::string request, answer; // the answer's whole text
    };
    const std::string failed = "0001 0009 00000000 0000000c 01000008 0000000";
    const std::string owner_failed = "0001 0009" + id + "00000014 01000008 0000000";
    const Row rows[] = {
        {"ping", "0003 0009 00000000 00000008 0b000004",
         "0002 0009 00000000 00000008 0b000004" + failed + "0"},
        {"unknown type", "00ff 0009 00000000 00000004", failed + "1"},
        {"another version is not looked at", "ff03 0009 00000000 00000004",
         "0002 0009 00000000 00000004" + failed + "0"},
        {"lookup of nothing", "0004 0009 00000000 0000000c 02000005 00000000", failed + "2"},
        {"invoke without id", "0005 0009 00000000 0000000c 04000006 6d000000", failed + "2"},
        {"invoke without method", "0005 0009 00000000 0000000c 03000008" + id, failed + "2"},
        {"unknown method", "0005 0009" + id + "00000018 03000008" + id + "04000006 6d000000 07000004",
         owner_failed + "3 03000008" + id},
        {"echo without data", "0005 0009" + id + "00000018 03000008" + id + "04000009 6563686f 00000000",
         owner_failed + "2 03000008" + id},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        auto wire = greeted();
        wire->send_hex(row.request);
        wire->expect_hex(row.answer);
    }
}

TEST(UbusServer, ListsSorted) {
    ServedBus bus;
    const std::pair<const char *, const char *> rows[] = {
        {"0004 0001 00000000 00000004", "own.anything own.demo \x7fsorts.last "},
        {"0004 0001 00000000 00000010 0200000b 6f776e2e 642a0000", "own.demo "}}; // "own.d*"
    for (auto [request, paths] : rows) {
        auto wire = greeted();
        wire->send_hex(request);
        std::string found;
        for (std::string message = wire->receive_message(); message.size() > 16 && message[1] == 2;
             message = wire->receive_message())
            found += std::string(message.c_str() + 16) + " ";
        EXPECT_EQ(found, paths);
    }
}

TEST(UbusServer, ClosesOnFrameErrorsAndServesTheOthers) {
    ServedBus bus;
    for (const char *frame : {"0003 0001 00000000 00000003", "0003 0001 00000000 00100001"}) {
        auto bad = greeted();
        auto good = greeted();
        bad->send_hex(frame);
        EXPECT_EQ(bad->receive(1), "") << frame;
        good->send_hex("0003 0001 00000000 00000004");
        good->expect_hex("0002 0001 00000000 00000004 0001 0001 00000000 0000000c 01000008 00000000");
    }
}

// A client that does not read loses messages, but what it gets is whole, and the server's memory stays
// bounded.
TEST(UbusServer, DropsMessagesForAClientThatDoesNotRead) {
    ServedBus bus;
    auto wire = greeted();
    constexpr int PINGS = 200;
    std::string ping = from_hex("0003 0001 00000000 00010000") + std::string(65532, 'p');
    for (int i = 0; i < PINGS; i++)
        wire->send(ping);
    int data = 0;
    std::string message;
    do {
        wire->send_hex("0003 0002 00000000 00000004"); // until there is room for its answer again
        message = wire->receive_message();
        data += message.size() == ping.size();
        ASSERT_TRUE(message.size() == ping.size() || message.size() == 20 || message.size() == 12)
            << message.size();
    } while (message.substr(0, 4) != from_hex("00010002"));
    EXPECT_GE(data, 16);
    EXPECT_LT(data, PINGS);
}

TEST(UbusServer, SurvivesAnyBytes) {
    ServedBus bus;
    std::mt19937 random(99);
    std::string seed =
        from_hex(captured::LOOKUP) + from_hex(with_id(captured::INVOKE_ECHO, bus.id("own.demo")));
    for (int round = 0; round < 400; round++) {
        std::string bytes = seed;
        for (auto flips = random() % 8; flips > 0; flips--)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        auto wire = connect_wire();
        wire->send(bytes);
        shutdown(wire->fd(), SHUT_WR);
        wire->await_close();
    }
    auto wire = greeted();
    wire->send_hex(captured::LOOKUP_UNKNOWN);
    wire->expect_hex(captured::UNKNOWN_STATUS);
}

} // namespace
