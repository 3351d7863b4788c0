// SPDX-License-Identifier: Apache-2.0
// Requests for properties and services and firmware offers: good and bad ones, answered at once, late, out of
// order or never.
#include "device.h"

#include <atomic>
#include <thread>

namespace {

std::string refused(const std::string &message) {
    return "-1 {\"code\":-1,\"message\":\"" + message + "\"}";
}

TEST_F(SdkTest, RequestsAreAnsweredOnce) {
    const std::string bad_offer = refused("the offer needs the texts url and md5");
    const struct {
        const char *topic;
        std::string payload, answer;
    } exchanges[] = {
        {"property/echo/get", "", "0 {}"},
        {"property/echo/set", "{\"a\":\"\u00e9\"}", "0 {\"code\":0}"},
        {"property/echo/get", "", "0 {\"a\":\"\u00e9\"}"},
        {"property/echo/set", std::string(10000, '['),
         "0 {\"code\":0}"}, // what it means is the slot's business
        {"property/full/get", "", "0 " + std::string(64 * 1024 - 1, 'x')},
        {"property/locked/get", "", refused("the device cannot read it")},
        {"property/locked/set", "{}", "7 {\"code\":7,\"reply\":\"locked is locked\"}"},
        {"property/full/set", "{}", refused("the property cannot be written")},
        {"property/nothing/get", "", refused("there is no such property")},
        {"property/echo/set", std::string(256 * 1024 + 1, ' '), refused("the request is too large")},
        {"property/echo/set", std::string("{}\0{}", 5), refused("the request is not a text")},
        {"service/echo", R"({"a":[1,2.50,"/"]})", R"(200 {"code":200,"data":{"a":[1,2.50,"/"]}})"},
        {"service/echo", "", R"(200 {"code":200,"data":{"parameters":null}})"},
        {"service/refuse", "{}", R"(402 {"code":402,"data":{}})"},
        {"service/text", "{}", R"(200 {"code":200,"data":"no \"JSON\""})"},
        {"service/nothing", "", R"(404 {"code":404,"data":{},"message":"there is no such service"})"},
        {"service/echo", std::string("a\0b", 3),
         R"(400 {"code":400,"data":{},"message":"the request is not a text"})"},
        {"upgrade", R"({"url":"http://h/i","md5":"AB","version":"5","strategy":"now"})", "5 {\"code\":5}"},
        {"upgrade", R"({"url":"","md5":"","strategy":1})", "0 {\"code\":0}"},
        {"upgrade", R"({"url":"u","md5":7})", bad_offer},
        {"upgrade", R"({"url":"u","md5":"m","version":[]})", bad_offer},
        {"upgrade", R"({"url":"u","md5":"m"} and more)", bad_offer},
        {"upgrade", "", bad_offer},
        {"upgrade", std::string(100000, '['), bad_offer},
    };
    start();
    gate.count_down();
    for (const auto &exchange : exchanges)
        EXPECT_EQ(answer(exchange.topic, exchange.payload), exchange.answer)
            << exchange.topic << " " << exchange.payload.substr(0, 80);
    for (const char *line : {"upgrade http://h/i|AB|5|now", "upgrade |||1"})
        EXPECT_EQ(diary.count(line), 1u) << line;
    EXPECT_EQ(diary.count("echo 0"), 2u);
    EXPECT_TRUE(diary.wait("again -1", 2));
    EXPECT_EQ(TEBRA_SDK_Handle_Response(0, 0, 200, "{}", "echo"), -1);
    EXPECT_EQ(TEBRA_SDK_Handle_Response(12345, 1, 200, "{}", "echo"), -1);
}

TEST_F(SdkTest, RequestsThatNobodyWaitsForDoNoHarm) {
    client.emplace(broker.socket());
    ASSERT_TRUE(client->subscribe("tebra/#"));
    client->publish({.topic = PREFIX + "service/later", .payload = "{}", .retain = true}); // never served
    ASSERT_TRUE(client->wait(PREFIX + "service/later"));
    start();
    const test_mqtt::Message messages[] = {
        {.topic = PREFIX + "property/echo/get"},
        {.topic = PREFIX + "service/echo", .payload = "{}"},
        // an answer that would come back as a request
        {.topic = PREFIX + "service/text", .response_topic = PREFIX + "service/later"},
        {.topic = PREFIX + "service/text", .response_topic = "with/a/+", .correlation = "x"},
        {.topic = PREFIX + "property/echo/set", .payload = "{\"applied\":1}"},
    };
    for (const test_mqtt::Message &message : messages)
        client->publish(message);
    EXPECT_TRUE(diary.wait("echo 0"));
    EXPECT_TRUE(answer("service/echo").starts_with("200"));
    EXPECT_EQ(answer("property/echo/get"), "0 {\"applied\":1}");
    EXPECT_EQ(diary.count("later"), 0u);
}

TEST_F(SdkTest, AnUpgradeHoldsUpNothingElse) {
    start();
    std::string offer = client->send_request(PREFIX + "upgrade", R"({"url":"u","md5":"m","version":"3"})");
    ASSERT_TRUE(diary.wait("upgrade u|m|3|"));
    EXPECT_EQ(answer("property/echo/get"), "0 {}");
    EXPECT_TRUE(answer("service/echo").starts_with("200"));
    gate.count_down();
    EXPECT_EQ(client->wait_answer(offer).value_or(test_mqtt::Message()).payload, "{\"code\":3}");
}

TEST_F(SdkTest, AFullQueueRefusesAndForgetsNothing) {
    start();
    constexpr size_t REQUESTS = 100;
    std::vector<std::string> sent;
    for (size_t i = 0; i < REQUESTS; i++)
        sent.push_back(client->send_request(PREFIX + "property/slow/get", ""));
    const std::string busy = "{\"code\":-1,\"message\":\"the device is busy\"}";
    auto first = client->wait([&](const auto &message) { return message.payload == busy; });
    ASSERT_TRUE(first);
    std::erase(sent, first->correlation);
    gate.count_down();
    size_t served = 0;
    for (const std::string &correlation : sent) {
        auto message = client->wait_answer(correlation);
        ASSERT_TRUE(message) << correlation;
        EXPECT_EQ(message->payload, message->code == "0" ? "{\"slow\":1}" : busy);
        served += message->code == "0";
    }
    EXPECT_GE(served, 64u); // as many as may wait
    EXPECT_LT(served, REQUESTS);
}

TEST_F(SdkTest, LateAnswersFindTheirRequests) {
    start();
    constexpr size_t CALLS = 60, THREADS = 4;
    std::vector<std::string> sent;
    for (size_t i = 0; i < CALLS; i++)
        sent.push_back(client->send_request(PREFIX + "service/later", std::to_string(i)));
    ASSERT_TRUE(diary.wait("later", CALLS));
    std::atomic<size_t> accepted = 0;
    {
        std::vector<std::jthread> threads;
        for (size_t t = 0; t < THREADS; t++) // each answers every call: all but one of them come too late
            threads.emplace_back([&, t] {
                for (size_t i = CALLS; i > 0; i--) {
                    const OpenCall &call = open_calls[(i + t * CALLS / THREADS) % CALLS];
                    const char *text = call.parameters.c_str();
                    accepted += TEBRA_SDK_Handle_Response(call.handle, call.request, 200, text, "") == 0;
                }
            });
    }
    EXPECT_EQ(accepted, CALLS);
    for (size_t i = 0; i < CALLS; i++)
        EXPECT_EQ(client->wait_answer(sent[i]).value_or(test_mqtt::Message()).payload,
                  "{\"code\":200,\"data\":" + std::to_string(i) + "}");
}

TEST_F(SdkTest, ACallThatIsNeverAnsweredIsGivenUp) {
    setenv("TEBRA_SDK_CALL_SECONDS", "1", 1);
    start();
    EXPECT_EQ(answer("service/later"), R"(408 {"code":408,"data":{},"message":"the device did not answer"})");
    ASSERT_TRUE(diary.wait("later"));
    const OpenCall &call = open_calls.at(0);
    EXPECT_EQ(TEBRA_SDK_Handle_Response(call.handle, call.request, 200, "{}", "later"), -1);
}

} // namespace
