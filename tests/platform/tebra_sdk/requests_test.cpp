// SPDX-License-Identifier: Apache-2.0
// Property requests and firmware offers, good and bad.
#include "device.h"

namespace {

struct Exchange {
    const char *topic;
    std::string payload;
    std::string answer;
};

std::string refused(const std::string &message) {
    return "-1 {\"code\":-1,\"message\":\"" + message + "\"}";
}

TEST_F(SdkTest, PropertyRequestsAreAnswered) {
    start();
    const Exchange exchanges[] = {
        {"property/echo/get", "", "0 {}"},
        {"property/echo/set", "{\"a\":\"\u00e9\"}", "0 {\"code\":0}"},
        {"property/echo/set", std::string(10000, '['),
         "0 {\"code\":0}"}, // what it means is the slot's business
        {"property/echo/get", "", "0 " + std::string(10000, '[')},
        {"property/full/get", "", "0 " + std::string(64 * 1024 - 1, 'x')},
        {"property/locked/get", "", refused("the device cannot read it")},
        {"property/locked/set", "{}", "7 {\"code\":7,\"reply\":\"locked is locked\"}"},
        {"property/full/set", "{}", refused("the property cannot be written")},
        {"property/nothing/get", "", refused("there is no such property")},
        {"property/echo/set", std::string(256 * 1024 + 1, ' '), refused("the request is too large")},
        {"property/echo/set", std::string("{}\0{}", 5), refused("the request is not a text")},
    };
    for (const Exchange &exchange : exchanges)
        EXPECT_EQ(answer(exchange.topic, exchange.payload), exchange.answer) << exchange.topic;
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
    EXPECT_EQ(answer("service/echo"), "200 {\"code\":200,\"data\":{\"parameters\":null}}");
    EXPECT_EQ(answer("property/echo/get"), "0 {\"applied\":1}");
    EXPECT_EQ(diary.count("later"), 0u);
    EXPECT_EQ(get_connect_state(), 1);
}

TEST_F(SdkTest, OffersAreReadStrictly) {
    start();
    gate.open();
    const std::string bad = refused("the offer needs the texts url and md5");
    const Exchange exchanges[] = {
        {"upgrade", R"({"url":"http://h/i","md5":"AB","version":"5","strategy":"now"})", "5 {\"code\":5}"},
        {"upgrade", R"({"url":"","md5":"","strategy":1})", "0 {\"code\":0}"},
        {"upgrade", R"({"url":"u","md5":7})", bad},
        {"upgrade", R"({"url":"u","md5":"m","version":[]})", bad},
        {"upgrade", R"({"url":"u","md5":"m"} and more)", bad},
        {"upgrade", "", bad},
        {"upgrade", std::string(100000, '['), bad},
    };
    for (const Exchange &exchange : exchanges)
        EXPECT_EQ(answer(exchange.topic, exchange.payload), exchange.answer)
            << exchange.payload.substr(0, 80);
    EXPECT_EQ(diary.count("upgrade http://h/i|AB|5|now"), 1u);
    EXPECT_EQ(diary.count("upgrade |||1"), 1u);
}

TEST_F(SdkTest, AnUpgradeHoldsUpNothingElse) {
    start();
    std::string offer = client->send_request(PREFIX + "upgrade", R"({"url":"u","md5":"m","version":"3"})");
    ASSERT_TRUE(diary.wait("upgrade u|m|3|"));
    EXPECT_EQ(answer("property/echo/get"), "0 {}");
    EXPECT_TRUE(answer("service/echo").starts_with("200"));
    gate.open();
    auto done = client->wait_answer(offer);
    ASSERT_TRUE(done);
    EXPECT_EQ(done->payload, "{\"code\":3}");
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
    gate.open();
    size_t served = 0;
    for (const std::string &correlation : sent) {
        auto message = client->wait_answer(correlation);
        ASSERT_TRUE(message) << correlation;
        EXPECT_TRUE(message->payload == busy || message->payload == "{\"slow\":1}") << message->payload;
        served += message->code == "0";
    }
    EXPECT_GE(served, 64u); // as many as may wait
    EXPECT_LT(served, REQUESTS);
}

} // namespace
