// SPDX-License-Identifier: Apache-2.0
// The broker against raw connections, byte for byte.
#include "served_bus.h"

namespace {

struct Greeted : Wire {
    Greeted() : Wire(unix_stream(BUS_PATH, connect)) {
        std::string hello = receive_message();
        EXPECT_EQ(hello.replace(4, 4, captured::HELLO, 4, 4), captured::HELLO);
    }
};

// The bytes of some traffic with another id in place of the captured object's.
std::string with_id(std::string bytes, const std::string &id) {
    for (size_t at = 0; (at = bytes.find("75fcccf2"_hex, at)) != std::string::npos; at += 4)
        bytes.replace(at, 4, id);
    return bytes;
}

// The object's id, after the rest of the answers was compared with the captured ones.
std::string look_up(const Wire &wire) {
    wire.send(captured::LOOKUP);
    std::string data = wire.receive_message(), expected = captured::LOOKUP_DATA;
    std::string id = data.substr(32, 4);
    EXPECT_GE(id, "00000400"_hex);
    expected.replace(40, 4, data, 40, 4); // the type's id
    EXPECT_EQ(data, with_id(expected, id));
    wire.expect(captured::LOOKUP_STATUS);
    return id;
}

TEST(UbusServer, AnswersEachRequest) {
    ServedBus bus;
    // What went through JSON lost its 16-bit integer to a 32-bit one of the same length.
    std::string echo = captured::ECHO_DATA + captured::ECHO_STATUS;
    echo.replace(echo.find("8600000a"_hex), 12, "8500000c 00017700 00000201"_hex);
    const std::string failed = "00010009 00000000 0000000c 01000008 000000"_hex;
    const std::string owner_failed = "00010009 75fcccf2 00000014 01000008 000000"_hex;
    const struct {
        const char *what;
        std::string request, answer;
    } rows[] = {
        {"call", captured::INVOKE_ECHO, echo},
        {"lookup of an unknown object", captured::LOOKUP_UNKNOWN, captured::UNKNOWN_STATUS},
        {"lookup of nothing", "00040009 00000000 0000000c 02000005 00000000"_hex, failed + '\2'},
        {"unknown object", "00050006 0000004d 00000014 03000008 0000004d 04000006 6d000000"_hex,
         captured::NO_OBJECT_STATUS},
        {"ping", "00030009 00000000 00000008 0b000004"_hex,
         "00020009 00000000 00000008 0b000004"_hex + failed + '\0'},
        {"another version is not looked at", "ff030009 00000000 00000004"_hex,
         "00020009 00000000 00000004"_hex + failed + '\0'},
        {"unknown type", "00ff0009 00000000 00000004"_hex, failed + '\1'},
        {"no id", "00050009 00000000 0000000c 04000006 6d000000"_hex, failed + '\2'},
        {"no method", "00050009 00000000 0000000c 03000008 75fcccf2"_hex, failed + '\2'},
        {"unknown method", "00050009 75fcccf2 00000018 03000008 75fcccf2 04000006 6d000000 07000004"_hex,
         owner_failed + "03 03000008 75fcccf2"_hex},
        {"no data", "00050009 75fcccf2 00000018 03000008 75fcccf2 04000009 6563686f 00000000"_hex,
         owner_failed + "02 03000008 75fcccf2"_hex},
    };
    Greeted wire;
    const std::string id = look_up(wire);
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        wire.send(with_id(row.request, id));
        wire.expect(with_id(row.answer, id));
    }
}

TEST(UbusServer, ListsSorted) {
    ServedBus bus;
    const std::pair<std::string, const char *> rows[] = {
        {"00040001 00000000 00000004"_hex, "own.any own.demo \x7fsorts.last "},
        {"00040001 00000000 00000010 0200000b 6f776e2e 642a0000"_hex, "own.demo "}}; // "own.d*"
    Greeted wire;
    for (const auto &[request, paths] : rows) {
        wire.send(request);
        std::string found, message;
        while ((message = wire.receive_message()).size() > 20) // until the status
            found += std::string(message.c_str() + 16) + " ";
        EXPECT_EQ(found, paths);
    }
}

TEST(UbusServer, ClosesOnFrameErrorsAndServesTheOthers) {
    ServedBus bus;
    Greeted good;
    for (const std::string &frame : {"00030001 00000000 00000003"_hex, "00030001 00000000 00100001"_hex}) {
        Greeted bad;
        bad.send(frame);
        EXPECT_TRUE(bad.drain());
        look_up(good);
    }
}

// A client that does not read loses messages, but what it gets is whole, and the server's memory stays
// bounded.
TEST(UbusServer, DropsMessagesForAClientThatDoesNotRead) {
    ServedBus bus;
    Greeted wire;
    constexpr int PINGS = 200;
    const std::string ping = "00030001 00000000 00010000"_hex + std::string(65532, 'p');
    for (int i = 0; i < PINGS; i++)
        wire.send(ping);
    int data = 0;
    std::string message;
    do {
        wire.send("00030002 00000000 00000004"_hex); // until there is room for its answer again
        message = wire.receive_message();
        data += message.size() == ping.size();
        ASSERT_TRUE(message.size() == ping.size() || message.size() == 20 || message.size() == 12)
            << message.size();
    } while (message.substr(0, 4) != "00010002"_hex);
    EXPECT_GE(data, 16);
    EXPECT_LT(data, PINGS);
}

TEST(UbusServer, SurvivesAnyBytes) {
    ServedBus bus;
    Greeted good;
    std::mt19937 random(99);
    const std::string seed = captured::LOOKUP + with_id(captured::INVOKE_ECHO, look_up(good));
    for (int round = 0; round < 400; round++) {
        Wire wire(unix_stream(BUS_PATH, connect));
        wire.send(damaged(seed, random));
        wire.send_no_more();
        wire.drain();
    }
    look_up(good);
}

} // namespace
