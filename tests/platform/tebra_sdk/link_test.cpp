// SPDX-License-Identifier: Apache-2.0
// The link's life: coming up, what the device says by itself, loss and return, death.
#include "device.h"

#include <csignal>
#include <sys/wait.h>

namespace {

const std::string ONLINE = R"({"online":true,"mac":"A1:B2:C3:D4:E5:F6","softwareVersion":"1.2.3",)"
                           R"("hardwareVersion":"","vendor":"","areaCode":""})";
const std::string OFFLINE = "{\"online\":false}";

TEST_F(SdkTest, SlotsAreCalledInOrder) {
    setenv("TEBRA_SDK_REPORT_SECONDS", "1", 1);
    start();
    auto greeted = std::chrono::steady_clock::now();
    ASSERT_TRUE(diary.wait("report", 2));
    // two periods, the first begun before `greeted`
    EXPECT_GE(std::chrono::steady_clock::now() - greeted, std::chrono::milliseconds(1800));
    std::vector<std::string> lines = diary.lines();
    lines.resize(8);
    EXPECT_EQ(lines, (std::vector<std::string>{"init a", "init c", "init d", "hook a", "hook d", "online",
                                               "report", "report"}));
}

TEST_F(SdkTest, PublicationsArrive) {
    start();
    EXPECT_EQ(TEBRA_SDK_PostProperty("{\"p\":1}"), 0);
    EXPECT_EQ(TEBRA_SDK_PostEvent("deviceConnet", "{\"e\":1}"), 0);
    EXPECT_EQ(TEBRA_SDK_PostUpgress(-3), 0);
    EXPECT_EQ(update_checkTime(1, 2, 3), 0);
    EXPECT_TRUE(client->wait(PREFIX + "property/post", "{\"p\":1}"));
    EXPECT_TRUE(client->wait(PREFIX + "event/deviceConnet", "{\"e\":1}"));
    EXPECT_TRUE(client->wait(PREFIX + "upgrade/progress", "{\"progress\":-3}"));
    EXPECT_TRUE(
        client->wait(PREFIX + "checktime", R"({"otaCheckInterval":1,"minInterval":2,"maxInterval":3})"));
    EXPECT_EQ(TEBRA_SDK_PostProperty(nullptr), -1);
    EXPECT_EQ(TEBRA_SDK_PostEvent("a", nullptr), -1);
    for (const char *name : {static_cast<const char *>(nullptr), "", "a/b", "+", "#", "a\x01", "\xff"})
        EXPECT_EQ(TEBRA_SDK_PostEvent(name, "{}"), -1);
}

TEST_F(SdkTest, TheLinkReturnsWithTheBrokerAndAStalledOneCostsNoMemory) {
    start();
    broker.stall();
    int accepted = 0;
    while (accepted < 1000 && TEBRA_SDK_PostProperty("{}") == 0)
        accepted++;
    EXPECT_GE(accepted, 200);
    EXPECT_LT(accepted, 1000);
    broker.stop();
    ASSERT_TRUE(eventually([] { return get_connect_state() == 0; }));
    EXPECT_EQ(TEBRA_SDK_PostProperty("{}"), -1);
    client.reset();
    ASSERT_TRUE(broker.start());
    client.emplace(broker.socket());
    ASSERT_TRUE(diary.wait("online", 2));
    EXPECT_EQ(diary.count("hook a"), 2u);
    EXPECT_EQ(diary.count("init a"), 1u);
    EXPECT_EQ(answer("property/echo/get"), "0 {}");
    EXPECT_TRUE(eventually([] { return TEBRA_SDK_PostProperty("{}") == 0; }));
}

TEST_F(SdkTest, TheBrokerMayComeLater) {
    broker.stop();
    EXPECT_EQ(start_sdk(&config), 0);
    EXPECT_EQ(start_sdk(&config), -1); // once only
    EXPECT_EQ(get_connect_state(), 0);
    ASSERT_TRUE(broker.start());
    EXPECT_TRUE(diary.wait("online"));
    EXPECT_EQ(get_connect_state(), 1);
}

TEST_F(SdkTest, DevicesShareABrokerAndADeadOneIsReportedOffline) {
    pid_t other = fork_device();
    start();
    const std::string other_device = "tebra/product1/serial2/";
    EXPECT_TRUE(client->wait(other_device + "status", ONLINE));
    EXPECT_EQ(answer("property/echo/set", "{\"first\":1}"), "0 {\"code\":0}");
    EXPECT_EQ(client->request(other_device + "property/echo/get", "").value().payload, "{}");
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    EXPECT_TRUE(client->wait(other_device + "status", OFFLINE));
    client.emplace(broker.socket()); // a latecomer
    ASSERT_TRUE(client->subscribe("tebra/#"));
    EXPECT_TRUE(client->wait(other_device + "status", OFFLINE));
    EXPECT_TRUE(client->wait(PREFIX + "status", ONLINE));
}

} // namespace
