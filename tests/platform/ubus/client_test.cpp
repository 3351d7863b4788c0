// SPDX-License-Identifier: Apache-2.0
// The client against a broker that says anything.
#include <atomic>
#include <chrono>

#include "scripted_peer.h"

namespace {

constexpr uint32_t OBJECT = captured::OBJECT_ID;
const std::string DATA_1 = "00020001 75fcccf2 00000014 07000010 8500000c 00016100 00000001"_hex; // {"a":1}

// The requests' number replaces that in the message.
std::string numbered(std::string message, const std::string &number) {
    return message.replace(2, 2, number);
}
// An INVOKE "m" without arguments, and STATUS 0 to it.
std::string request(const std::string &number) {
    return numbered("00050000 75fcccf2 00000018 03000008 75fcccf2 04000006 6d000000 07000004"_hex, number);
}
std::string done(const std::string &number) {
    return numbered("00010000 75fcccf2 0000000c 01000008 00000000"_hex, number);
}
const std::string DONE_1 = done("0001"_hex);

// What is asked (anything when empty), and what the peer answers, byte by byte.
ScriptedPeer::Script exchanges(const std::vector<std::pair<std::string, std::string>> &steps) {
    return [steps](const Wire &wire) {
        for (const auto &[asked, answer] : steps) {
            std::string message = wire.receive_message();
            if (!asked.empty()) {
                EXPECT_EQ(message, asked);
            }
            for (char byte : answer)
                wire.send(std::string(1, byte));
        }
    };
}

// A client connected to such a peer.
struct Talk {
    explicit Talk(const ScriptedPeer::Script &script) : peer(script) {}
    int call(int timeout = LIMIT) { return client.call(OBJECT, "m", nullptr, timeout).status; }
    ScriptedPeer peer;
    Client client{BUS_PATH};
};

TEST(BusClient, SpeaksTheCapturedSession) {
    Talk talk(exchanges({
        {captured::LOOKUP, captured::LOOKUP_DATA + captured::LOOKUP_STATUS},
        {captured::INVOKE_ECHO, captured::ECHO_DATA + captured::ECHO_STATUS},
        {captured::INVOKE_NONE, "00010003 75fcccf2 0000000c 01000008 00000003"_hex},
        {"", "00010004 00000000 0000000c 01000008 00000000"_hex},
        {captured::LOOKUP_UNKNOWN, captured::UNKNOWN_STATUS},
    }));
    Client &client = talk.client;
    EXPECT_EQ(client.context->local_id, captured::CLIENT_ID);
    uint32_t id = 0;
    EXPECT_EQ(client.look_up("own.demo", &id), UBUS_STATUS_OK);
    EXPECT_EQ(id, OBJECT);
    std::string invoke = captured::INVOKE_ECHO;
    Answer answer = client.call(id, "echo", reinterpret_cast<blob_attr *>(invoke.data() + 0x20));
    EXPECT_EQ(answer.status, UBUS_STATUS_OK);
    EXPECT_EQ(answer.json, captured::ECHO_JSON);
    EXPECT_EQ(client.call(id, "none").status, UBUS_STATUS_METHOD_NOT_FOUND);
    EXPECT_EQ(client.look_up("untyped", &id), UBUS_STATUS_OK);
    EXPECT_EQ(client.look_up("nope", &id), UBUS_STATUS_NOT_FOUND);
    EXPECT_EQ(id, OBJECT) << "left alone";
}

int losses;

TEST(BusClient, TakesFromEachAnswerWhatBelongsToItsCall) {
    constexpr int LOST = UBUS_STATUS_CONNECTION_FAILED;
    const struct {
        const char *what;
        std::string answer; // then the peer closes
        int status;
        const char *json;
    } rows[] = {
        {"status and data", DATA_1 + DONE_1, 0, R"({"a":1})"},
        {"data twice", DATA_1 + DATA_1 + DONE_1, 0, R"({"a":1}{"a":1})"},
        {"more after the status", DONE_1 + DATA_1 + DONE_1, 0, ""},
        {"status without its attribute", "00010001 75fcccf2 00000004"_hex, 2, ""},
        {"status of the wrong size", "00010001 75fcccf2 0000000c 01000006 00000000"_hex, 2, ""},
        {"status not listed", "00010001 75fcccf2 0000000c 01000008 000000ff"_hex, 255, ""},
        {"another number", numbered(DATA_1, "0002"_hex) + DONE_1, 0, ""},
        {"another peer", "00010001 75fcccf3 0000000c 01000008 00000009"_hex + DATA_1 + DONE_1, 0,
         R"({"a":1})"},
        {"another version", "01010001 75fcccf2 0000000c 01000008 00000009"_hex + DONE_1, 0, ""},
        {"requests", "00050001 75fcccf2 00000004 00ff0001 75fcccf2 00000004"_hex + DONE_1, 0, ""},
        {"data without its attribute", "00020001 75fcccf2 00000004"_hex + DONE_1, 0, ""},
        {"data twice in a message", "00020001 75fcccf2 0000000c 07000004 07000004"_hex + DONE_1, 0, "{}"},
        {"nothing", "", LOST, ""},
        {"half a message", DATA_1.substr(0, 14), LOST, ""},
        {"less than a word announced", "00010001 75fcccf2 00000003"_hex, LOST, ""},
        {"more than the limit announced", "00010001 75fcccf2 00100001 01000008"_hex, LOST, ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        Talk talk(exchanges({{"", row.answer}}));
        losses = 0;
        talk.client.context->connection_lost = [](ubus_context *) { losses++; };
        Answer answer = talk.client.call(OBJECT, "m");
        EXPECT_EQ(answer.status, row.status);
        EXPECT_EQ(answer.json, row.json);
        EXPECT_EQ(talk.client.context->sock.eof, row.status == LOST);
        if (row.status == LOST) {
            EXPECT_EQ(talk.call(), UBUS_STATUS_INVALID_ARGUMENT);
        }
        EXPECT_EQ(losses, row.status == LOST ? 1 : 0);
    }
}

// OBJID 8, METHOD "m" 8, DATA 4 and its attribute's 8 go beside the text.
TEST(BusClient, SendsMessagesUpToTheLimit) {
    constexpr size_t OVERHEAD = 4 + 8 + 8 + 4 + 4 + 4;
    Talk talk([](const Wire &wire) {
        std::string largest = wire.receive_message();
        EXPECT_EQ(largest.size(), 8U + UBUS_MAX_MSGLEN);
        wire.send(largest.replace(1, 1, "\2") + DONE_1); // DATA with the same body
        exchanges({{request("0003"_hex), done("0003"_hex)}})(wire);
    });
    std::string text(UBUS_MAX_MSGLEN - OVERHEAD - 1, 'x');
    Buffer message, longer;
    blobmsg_add_string(&message, "", text.c_str());
    Answer answer = talk.client.call(OBJECT, "m", message.head);
    EXPECT_EQ(answer.status, UBUS_STATUS_OK);
    EXPECT_EQ(answer.json.size(), text.size() + 4);
    blobmsg_add_string(&longer, "", (text + "x").c_str());
    EXPECT_EQ(talk.client.call(OBJECT, "m", longer.head).status, UBUS_STATUS_INVALID_ARGUMENT);
    EXPECT_EQ(talk.call(), UBUS_STATUS_OK);
}

TEST(BusClient, TimesOutAndStaysUsableWhileItsNumbersWrap) {
    Talk talk(exchanges({{request("ffff"_hex), ""},
                         {request("0000"_hex), ""},
                         {request("0001"_hex), numbered(DATA_1, "ffff"_hex) + done("ffff"_hex) + DONE_1}}));
    talk.client.context->request_seq = 0xfffe;
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(talk.call(50), UBUS_STATUS_TIMEOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
    EXPECT_EQ(talk.call(-1), UBUS_STATUS_TIMEOUT);
    Answer answer = talk.client.call(OBJECT, "m", nullptr, 0);
    EXPECT_EQ(answer.status, UBUS_STATUS_OK);
    EXPECT_EQ(answer.json, "");
}

// Neither a flood that never answers nor one who does not read keeps the call past its time.
TEST(BusClient, GivesUpABrokerThatFloodsOrDoesNotRead) {
    std::atomic<bool> over = false;
    std::string noise;
    for (int i = 0; i < 1000; i++)
        noise += "00020009 00000000 00000004"_hex;
    Talk talk([&](const Wire &wire) {
        while (!over)
            wire.send(noise);
    });
    EXPECT_EQ(talk.call(100), UBUS_STATUS_TIMEOUT);
    Buffer message;
    blobmsg_add_string(&message, "s", std::string(1000000, 'x').c_str());
    EXPECT_EQ(talk.client.call(OBJECT, "m", message.head, 100).status, UBUS_STATUS_CONNECTION_FAILED);
    EXPECT_TRUE(talk.client.context->sock.eof) << "half a message has been sent";
    over = true;
}

TEST(BusClient, RefusesGreetingsThatAreNone) {
    for (const std::string &greeting :
         {""_hex, "00000000 6fca"_hex, "00000000 00000000 00000004"_hex, "00010000 6fcafb23 00000004"_hex,
          "01000000 6fcafb23 00000004"_hex, "00000000 6fcafb23 00000003"_hex}) {
        ScriptedPeer peer([](const Wire &) {}, greeting);
        EXPECT_FALSE(Client(BUS_PATH).context) << testing::PrintToString(greeting);
    }
    EXPECT_FALSE(Client("/tmp/nobody.sock").context);
    EXPECT_FALSE(Client(std::string(200, 'x').c_str()).context);
}

TEST(BusClient, AnswersOfAsynchronousCallsArriveWhileAnotherWaits) {
    const std::string refused = "00010001 75fcccf2 0000000c 01000008 00000004"_hex;
    Talk talk(exchanges({{request("0001"_hex), ""}, {request("0002"_hex), refused + done("0002"_hex)}}));
    ubus_request sent{};
    int result = -1;
    EXPECT_EQ(ubus_invoke_async(talk.client.context.get(), OBJECT, "m", nullptr, &sent), UBUS_STATUS_OK);
    sent.priv = &result;
    sent.complete_cb = [](ubus_request *call, int status) { *static_cast<int *>(call->priv) = status; };
    ubus_complete_request_async(talk.client.context.get(), &sent);
    EXPECT_EQ(talk.call(), UBUS_STATUS_OK);
    EXPECT_EQ(result, UBUS_STATUS_NOT_FOUND);
}

// Any bytes in place of an answer: a status within the time, and nothing read outside the message.
TEST(BusClient, SurvivesAnyAnswer) {
    std::mt19937 random(7);
    const std::string seed = numbered(captured::ECHO_DATA + captured::ECHO_STATUS, "0001"_hex);
    for (int round = 0; round < 400; round++)
        Talk([answer = damaged(seed, random)](const Wire &wire) {
            wire.receive_message();
            wire.send(answer);
        }).call();
}

} // namespace
