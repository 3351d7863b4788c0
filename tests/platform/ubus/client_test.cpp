// SPDX-License-Identifier: Apache-2.0
// The client against a broker that says anything.
#include <chrono>
#include <csignal>
#include <future>
#include <random>

#include "client_rig.h"
#include "scripted_peer.h"

namespace {

constexpr uint32_t OBJECT = captured::OBJECT_ID;
constexpr int LIMIT = 5000; // for calls that are answered
const std::string DATA_1 =
    "00020001 75fcccf2 00000014 07000010 8500000c 00016100 00000001"; // {"a":1}, without OBJID

// STATUS 0 for the request of that number.
std::string done(const std::string &number) {
    return "0001" + number + "75fcccf2 0000000c 01000008 00000000";
}

// An INVOKE "m" without arguments, and what the peer answers to it, byte by byte.
ScriptedPeer::Script answering(const std::string &hex) {
    return [hex](Wire &wire) {
        wire.receive_message();
        for (char byte : from_hex(hex))
            wire.send(std::string(1, byte));
        wire.await_close();
    };
}

TEST(BusClient, SpeaksTheCapturedSession) {
    ScriptedPeer peer([](Wire &wire) {
        wire.expect_hex(captured::LOOKUP);
        wire.send_hex(captured::LOOKUP_DATA);
        wire.send_hex(captured::LOOKUP_STATUS);
        wire.expect_hex(captured::INVOKE_ECHO);
        wire.send_hex(captured::ECHO_DATA);
        wire.send_hex(captured::ECHO_STATUS);
        wire.expect_hex(captured::INVOKE_NONE);
        wire.send_hex("00010003 75fcccf2 0000000c 01000008 00000003");
        wire.receive_message(); // request 4
        wire.send_hex("00010004 00000000 0000000c 01000008 00000000");
        wire.expect_hex(captured::LOOKUP_UNKNOWN);
        wire.send_hex(captured::UNKNOWN_STATUS);
    });
    Context context(ubus_connect(PEER_SOCKET));
    ASSERT_TRUE(context);
    EXPECT_EQ(context->local_id, captured::CLIENT_ID);
    uint32_t id = 0;
    EXPECT_EQ(ubus_lookup_id(context.get(), "own.demo", &id), UBUS_STATUS_OK);
    EXPECT_EQ(id, OBJECT);

    std::string whole = from_hex(captured::INVOKE_ECHO);
    auto *arguments = reinterpret_cast<blob_attr *>(whole.data() + 0x20);
    std::string reply;
    EXPECT_EQ(ubus_invoke(context.get(), id, "echo", arguments, collect_json, &reply, LIMIT), UBUS_STATUS_OK);
    EXPECT_EQ(reply, captured::ECHO_JSON);
    EXPECT_EQ(ubus_invoke(context.get(), id, "none", nullptr, nullptr, nullptr, LIMIT),
              UBUS_STATUS_METHOD_NOT_FOUND);
    EXPECT_EQ(ubus_lookup_id(context.get(), "untyped", &id), UBUS_STATUS_OK);
    EXPECT_EQ(ubus_lookup_id(context.get(), "nope", &id), UBUS_STATUS_NOT_FOUND);
    EXPECT_EQ(id, OBJECT) << "left alone";
}

TEST(BusClient, TakesFromEachAnswerWhatBelongsToItsCall) {
    struct Row {
        const char *what;
        std::string answer;
        int status;
        const char *json;
    };
    const Row rows[] = {
        {"status and data", DATA_1 + done("0001"), 0, R"({"a":1})"},
        {"data twice", DATA_1 + DATA_1 + done("0001"), 0, R"({"a":1}{"a":1})"},
        {"more after the status", done("0001") + DATA_1 + "00010001 75fcccf2 0000000c 01000008 00000006", 0,
         ""},
        {"status without its attribute", "00010001 75fcccf2 00000004", 2, ""},
        {"status of the wrong size", "00010001 75fcccf2 0000000c 01000006 00000000", 2, ""},
        {"status not listed", "00010001 75fcccf2 0000000c 01000008 000000ff", 255, ""},
        {"another number", "00020002 75fcccf2 00000008 07000004" + done("0001"), 0, ""},
        {"another peer", "00010001 75fcccf3 0000000c 01000008 00000009" + DATA_1 + done("0001"), 0,
         R"({"a":1})"},
        {"another version", "01010001 75fcccf2 0000000c 01000008 00000009" + done("0001"), 0, ""},
        {"requests of others", "00050001 75fcccf2 00000004 00ff0001 75fcccf2 00000004" + done("0001"), 0, ""},
        {"data without its attribute", "00020001 75fcccf2 00000004" + done("0001"), 0, ""},
        {"data twice in a message", "00020001 75fcccf2 0000000c 07000004 07000004" + done("0001"), 0, "{}"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        ScriptedPeer peer(answering(row.answer));
        Context context(ubus_connect(PEER_SOCKET));
        Answer answer = invoke(context.get(), OBJECT, "m", nullptr, LIMIT);
        EXPECT_EQ(answer.status, row.status);
        EXPECT_EQ(answer.json, row.json);
    }
}

// OBJID 8, METHOD "m" 8, DATA 4 and its attribute's 8 go beside the text.
TEST(BusClient, SendsMessagesUpToTheLimit) {
    constexpr size_t OVERHEAD = 4 + 8 + 8 + 4 + 4 + 4;
    ScriptedPeer peer([](Wire &wire) {
        std::string largest = wire.receive_message();
        EXPECT_EQ(largest.size(), 8U + UBUS_MAX_MSGLEN);
        wire.send(largest.substr(0, 1) + "\2" + largest.substr(2)); // DATA with the same body
        wire.send_hex(done("0001"));
        wire.expect_hex("00050002 75fcccf2 00000018 03000008 75fcccf2 04000006 6d000000 07000004");
        wire.send_hex(done("0002"));
    });
    Context context(ubus_connect(PEER_SOCKET));
    blob_buf message{};
    blob_buf_init(&message, 0);
    std::string text(UBUS_MAX_MSGLEN - OVERHEAD - 1, 'x');
    blobmsg_add_string(&message, "", text.c_str());
    std::string reply;
    EXPECT_EQ(ubus_invoke(context.get(), OBJECT, "m", message.head, collect_json, &reply, LIMIT),
              UBUS_STATUS_OK);
    EXPECT_EQ(reply.size(), text.size() + 4);

    blob_buf_init(&message, 0);
    blobmsg_add_string(&message, "", (text + "x").c_str());
    context->request_seq--; // the number of a request that is not sent is used up
    EXPECT_EQ(ubus_invoke(context.get(), OBJECT, "m", message.head, nullptr, nullptr, LIMIT),
              UBUS_STATUS_INVALID_ARGUMENT);
    context->request_seq = 1;
    EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, LIMIT).status, UBUS_STATUS_OK);
    blob_buf_free(&message);
}

TEST(BusClient, NumbersWrap) {
    ScriptedPeer peer([](Wire &wire) {
        for (const char *number : {"ffff", "0000", "0001"}) {
            EXPECT_EQ(to_hex(wire.receive_message().substr(0, 4)), "0005" + std::string(number));
            wire.send_hex(done(number));
        }
    });
    Context context(ubus_connect(PEER_SOCKET));
    context->request_seq = 0xfffe;
    for (int i = 0; i < 3; i++)
        EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, LIMIT).status, UBUS_STATUS_OK);
}

TEST(BusClient, TimesOutAndStaysUsable) {
    ScriptedPeer peer([](Wire &wire) {
        wire.receive_message();
        wire.receive_message();
        wire.receive_message();
        wire.send_hex(DATA_1 + done("0001")); // too late
        wire.send_hex(done("0003"));
        wire.await_close();
    });
    Context context(ubus_connect(PEER_SOCKET));
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, 50).status, UBUS_STATUS_TIMEOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
    EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, -1).status, UBUS_STATUS_TIMEOUT);
    Answer answer = invoke(context.get(), OBJECT, "m", nullptr, 0);
    EXPECT_EQ(answer.status, UBUS_STATUS_OK);
    EXPECT_EQ(answer.json, "");
}

// A flood that never answers must not keep the call past its time.
TEST(BusClient, AFloodDoesNotExtendTheTimeOut) {
    std::atomic<bool> over = false;
    ScriptedPeer peer([&](Wire &wire) {
        std::string noise;
        for (int i = 0; i < 1000; i++)
            noise += from_hex("00020009 00000000 00000004");
        while (!over)
            ::send(wire.fd(), noise.data(), noise.size() / 12 * 12, MSG_NOSIGNAL);
    });
    Context context(ubus_connect(PEER_SOCKET));
    EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, 100).status, UBUS_STATUS_TIMEOUT);
    over = true;
    context.reset();
}

int lost_calls;

TEST(BusClient, NoticesThatTheBrokerIsGone) {
    const std::string endings[] = {
        "",                                    // closes without an answer
        "00020001 75fcccf2 00000014 0700",     // in the middle of a message
        "00010001 75fcccf2 00000003",          // announces less than a word
        "00010001 75fcccf2 00100001 01000008", // announces more than the limit
    };
    for (const std::string &ending : endings) {
        ScriptedPeer peer([&](Wire &wire) {
            wire.receive_message();
            wire.send_hex(ending);
        });
        Context context(ubus_connect(PEER_SOCKET));
        lost_calls = 0;
        context->connection_lost = [](ubus_context *) { lost_calls++; };
        EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, LIMIT).status, UBUS_STATUS_CONNECTION_FAILED)
            << ending;
        EXPECT_TRUE(context->sock.eof) << ending;
        EXPECT_EQ(lost_calls, 1) << ending;
        EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, LIMIT).status, UBUS_STATUS_INVALID_ARGUMENT);
        EXPECT_EQ(lost_calls, 1) << ending;
    }
}

TEST(BusClient, ConnectsAgainOnTheSameContext) {
    auto context = std::make_unique<ubus_context>();
    {
        ScriptedPeer peer([](Wire &) {});
        ASSERT_EQ(ubus_connect_ctx(context.get(), PEER_SOCKET), 0);
    }
    unlink(PEER_SOCKET);
    EXPECT_EQ(ubus_reconnect(context.get(), PEER_SOCKET), UBUS_STATUS_CONNECTION_FAILED);
    EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, LIMIT).status, UBUS_STATUS_INVALID_ARGUMENT);
    ScriptedPeer peer(answering(done("0003")));
    EXPECT_EQ(ubus_reconnect(context.get(), PEER_SOCKET), UBUS_STATUS_OK);
    context->request_seq = 2;
    EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, LIMIT).status, UBUS_STATUS_OK);
    ubus_shutdown(context.get());
}

TEST(BusClient, RefusesGreetingsThatAreNone) {
    for (const char *greeting :
         {"", "00000000 6fca", "00000000 00000000 00000004", "00010000 6fcafb23 00000004",
          "01000000 6fcafb23 00000004", "00000000 6fcafb23 00000003"}) {
        ScriptedPeer peer([=](Wire &wire) { wire.send_hex(greeting); }, false);
        EXPECT_FALSE(Context(ubus_connect(PEER_SOCKET))) << greeting;
    }
    EXPECT_FALSE(Context(ubus_connect("/tmp/nobody.sock")));
    EXPECT_FALSE(Context(ubus_connect(std::string(200, 'x').c_str())));
}

TEST(BusClient, GivesUpABrokerThatDoesNotRead) {
    std::promise<void> over;
    ScriptedPeer peer([&](Wire &) { over.get_future().wait(); });
    Context context(ubus_connect(PEER_SOCKET));
    blob_buf message{};
    blob_buf_init(&message, 0);
    blobmsg_add_string(&message, "s", std::string(1000000, 'x').c_str());
    EXPECT_EQ(ubus_invoke(context.get(), OBJECT, "m", message.head, nullptr, nullptr, 100),
              UBUS_STATUS_CONNECTION_FAILED);
    EXPECT_TRUE(context->sock.eof) << "half a message has been sent";
    over.set_value();
    blob_buf_free(&message);
}

struct Completion {
    int count = 0, ret = -1;
    std::string json;
};

void send_async(ubus_context *context, ubus_request *req, Completion *completion) {
    ASSERT_EQ(ubus_invoke_async(context, OBJECT, "m", nullptr, req), UBUS_STATUS_OK);
    req->priv = completion;
    req->complete_cb = [](ubus_request *over, int ret) {
        static_cast<Completion *>(over->priv)->count++;
        static_cast<Completion *>(over->priv)->ret = ret;
    };
    req->data_cb = [](ubus_request *over, int, blob_attr *) {
        static_cast<Completion *>(over->priv)->json += "data";
    };
    ubus_complete_request_async(context, req);
}

TEST(BusClient, AnswersOfAsynchronousCallsArriveInAnyOrder) {
    ScriptedPeer peer([](Wire &wire) {
        for (int i = 0; i < 4; i++)
            wire.receive_message();
        wire.send_hex("00020003 75fcccf2 00000008 07000004 00010003 75fcccf2 0000000c 01000008 00000004");
        wire.send_hex(done("0002")); // aborted below
        wire.send_hex(done("0004"));
        wire.receive_message();
    });
    Context context(ubus_connect(PEER_SOCKET));
    ubus_request first, aborted, third;
    Completion one, two, three;
    send_async(context.get(), &first, &one);
    send_async(context.get(), &aborted, &two);
    send_async(context.get(), &third, &three);
    ubus_abort_request(context.get(), &aborted);
    EXPECT_EQ(invoke(context.get(), OBJECT, "m", nullptr, LIMIT).status, UBUS_STATUS_OK);
    EXPECT_EQ(three.ret, UBUS_STATUS_NOT_FOUND) << "delivered while another call waited";
    EXPECT_EQ(three.json, "data");
    EXPECT_EQ(two.count, 0);
    EXPECT_EQ(one.count, 0);
    EXPECT_EQ(ubus_complete_request(context.get(), &first, 20), UBUS_STATUS_TIMEOUT);
    EXPECT_EQ(one.count, 1);
    shutdown(context->sock.fd, SHUT_WR);
}

TEST(BusClient, IsServedByTheLoopUntilTheConnectionIsLost) {
    ScriptedPeer peer([](Wire &wire) {
        wire.receive_message();
        wire.send_hex(done("0001"));
        wire.receive_message();
    });
    Context context(ubus_connect(PEER_SOCKET));
    ubus_add_uloop(context.get());
    ubus_request first, second;
    Completion one, two;
    send_async(context.get(), &first, &one);
    while (one.count == 0)
        ASSERT_EQ(uloop_run_timeout(10), 0);
    EXPECT_EQ(one.ret, UBUS_STATUS_OK);
    send_async(context.get(), &second, &two);
    uloop_run(); // ended by the loss
    EXPECT_EQ(two.ret, UBUS_STATUS_TIMEOUT);
}

// Signals are taken over while the loop is in use, but for a handler that the program installed itself.
TEST(Uloop, TimersFireInOrderAndSignalsEndTheLoop) {
    static std::string fired;
    struct Named {
        uloop_timeout timeout;
        char name;
    };
    Named timers[] = {{{}, 'c'}, {{}, 'a'}, {{}, 'b'}, {{}, 'x'}};
    const int due[] = {30, 1, 15, 5};
    signal(SIGINT, SIG_IGN);
    uloop_init();
    EXPECT_EQ(signal(SIGINT, SIG_IGN), SIG_IGN);
    for (size_t i = 0; i < 4; i++) {
        timers[i].timeout.cb = [](uloop_timeout *timeout) {
            fired += container_of(timeout, Named, timeout)->name;
            if (fired == "abc") raise(SIGTERM);
        };
        EXPECT_EQ(uloop_timeout_set(&timers[i].timeout, due[i]), 0);
    }
    EXPECT_EQ(uloop_timeout_cancel(&timers[3].timeout), 0);
    EXPECT_EQ(uloop_timeout_cancel(&timers[3].timeout), -1);
    EXPECT_EQ(uloop_run(), SIGTERM);
    EXPECT_EQ(fired, "abc");
    uloop_done();
    EXPECT_EQ(signal(SIGTERM, SIG_DFL), SIG_DFL);
}

// Any bytes in place of an answer: a status within the time, and nothing read outside the message.
TEST(BusClient, SurvivesAnyAnswer) {
    std::mt19937 random(7);
    std::string seed = from_hex(captured::ECHO_DATA) + from_hex(captured::ECHO_STATUS);
    for (int round = 0; round < 400; round++) {
        std::string bytes = seed;
        bytes[3] = 1; // the number of the request
        for (auto flips = random() % 8; flips > 0; flips--)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        ScriptedPeer peer([&](Wire &wire) {
            wire.receive_message();
            wire.send(bytes);
        });
        Context context(ubus_connect(PEER_SOCKET));
        ASSERT_TRUE(context);
        invoke(context.get(), OBJECT, "m", nullptr, LIMIT);
    }
}

} // namespace
