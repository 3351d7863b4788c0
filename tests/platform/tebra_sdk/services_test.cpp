// SPDX-License-Identifier: Apache-2.0
// Service calls: answered at once, late, out of order, twice or never.
#include "device.h"

#include <algorithm>
#include <thread>

namespace {

TEST_F(SdkTest, CallsAreAnsweredOnce) {
    start();
    const struct {
        const char *topic;
        std::string payload;
        std::string answer;
    } calls[] = {
        {"service/echo", R"({"a":[1,2.50,"/"]})", R"(200 {"code":200,"data":{"a":[1,2.50,"/"]}})"},
        {"service/echo", "", R"(200 {"code":200,"data":{"parameters":null}})"},
        {"service/refuse", "{}", R"(402 {"code":402,"data":{}})"},
        {"service/text", "{}", R"(200 {"code":200,"data":"no \"JSON\""})"},
        {"service/nothing", "", R"(404 {"code":404,"data":{},"message":"there is no such service"})"},
        {"service/echo", std::string("a\0b", 3),
         R"(400 {"code":400,"data":{},"message":"the request is not a text"})"},
    };
    for (const auto &call : calls)
        EXPECT_EQ(answer(call.topic, call.payload), call.answer) << call.topic;
    EXPECT_EQ(diary.count("echo 0"), 2u);
    EXPECT_TRUE(diary.wait("again -1", 2));
    EXPECT_EQ(TEBRA_SDK_Handle_Response(0, 0, 200, "{}", "echo"), -1);
    EXPECT_EQ(TEBRA_SDK_Handle_Response(12345, 1, 200, "{}", "echo"), -1);
}

TEST_F(SdkTest, LateAnswersFindTheirRequests) {
    start();
    constexpr size_t CALLS = 60, THREADS = 4;
    std::vector<std::string> sent;
    for (size_t i = 0; i < CALLS; i++)
        sent.push_back(client->send_request(PREFIX + "service/later", std::to_string(i)));
    ASSERT_TRUE(diary.wait("later", CALLS));
    std::vector<OpenCall> calls = open_calls();
    std::reverse(calls.begin(), calls.end());
    std::atomic<int> accepted = 0;
    std::vector<std::thread> threads;
    for (size_t t = 0; t < THREADS; t++) // each answers every call: all but one of them come too late
        threads.emplace_back([&, t] {
            for (size_t i = 0; i < CALLS; i++) {
                const OpenCall &call = calls[(i + t * CALLS / THREADS) % CALLS];
                accepted += TEBRA_SDK_Handle_Response(call.handle, call.request, 200, call.parameters.c_str(),
                                                      "later") == 0;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(accepted, static_cast<int>(CALLS));
    for (size_t i = 0; i < CALLS; i++) {
        auto message = client->wait_answer(sent[i]);
        ASSERT_TRUE(message) << i;
        EXPECT_EQ(message->payload, "{\"code\":200,\"data\":" + std::to_string(i) + "}");
    }
}

TEST_F(SdkTest, ACallThatIsNeverAnsweredIsGivenUp) {
    setenv("TEBRA_SDK_CALL_SECONDS", "1", 1);
    start();
    EXPECT_EQ(answer("service/later"), R"(408 {"code":408,"data":{},"message":"the device did not answer"})");
    OpenCall call = open_calls().at(0);
    EXPECT_EQ(TEBRA_SDK_Handle_Response(call.handle, call.request, 200, "{}", "later"), -1);
}

} // namespace
