// SPDX-License-Identifier: Apache-2.0
#include "relay/relay.h"

#include <atomic>
#include <gmock/gmock.h>
#include <random>
#include <string>
#include <thread>

#include "core/global_config.h"
#include "core/log.h"
#include "core/registration.h"
#include "core/text.h"
#include "support/event_catcher.h"
#include "support/main_log.h"
#include "support/recording_sdk.h"

namespace {

using testing::ElementsAre;

std::string actions_called;

void note_interval(long seconds) {
    actions_called += "interval " + std::to_string(seconds);
}

int note_report() {
    actions_called += "report";
    return 0;
}

int give_address(char *address, int size) {
    copy_text(address, static_cast<size_t>(size), "https://host/?id=1");
    return 0;
}

int handle(const std::string &datagram) {
    return handle_qvtk_event(datagram.data(), static_cast<int>(datagram.size()));
}

struct Row {
    std::string members; // the action and what follows it
    int result;
    std::string call = "";    // of the SDK
    std::string message = ""; // in the log, besides the datagram
    std::string action = "";  // what the relay's links were asked for
};

struct Relay : testing::Test {
    Relay() {
        set_default_logs();
        set_relay_actions({note_interval, note_report, give_address});
    }

    static void expect(const Row &row) {
        const std::string datagram = "{\"action\":" + row.members + "}";
        SCOPED_TRACE(datagram);
        recording_sdk::clear_calls();
        clear_main_log();
        actions_called.clear();
        EXPECT_EQ(handle(datagram), row.result);
        EXPECT_EQ(recording_sdk::lines(), std::vector(!row.call.empty(), row.call));
        EXPECT_TRUE(has_logged("msg:" + datagram));
        EXPECT_TRUE(row.message.empty() || has_logged(row.message));
        EXPECT_EQ(actions_called, row.action);
    }
};

TEST_F(Relay, DatagramsBecomeCallsOfTheCloud) {
    const std::string post = "TEBRA_SDK_PostEvent(";
    const Row rows[] = {
        {R"("updatesettime","otaCheckInterval":60,"minInterval":5,"maxInterval":90)", 0,
         "update_checkTime(60, 5, 90)", "otaCheckInterval:60, minInterval:5, maxInterval:90", "interval 60"},
        {R"("updatesettime","otaCheckInterval":99999999999,"maxInterval":-99999999999)", 0,
         "update_checkTime(2147483647, 0, -2147483648)", "", "interval 2147483647"},
        {R"("updatesettime","minInterval":"7")", 0, "update_checkTime(0, 7, 0)"},
        {R"("upgradeProgress","progress":80)", 0, "TEBRA_SDK_PostUpgress(80)",
         "handle receive Upgradeprogress : 80"},
        {R"("upgradeProgress")", 0, "TEBRA_SDK_PostUpgress(-1)"},
        {R"("deviceUpgrade","mac":"M","result":1,"msg":"no")", 0,
         post + R"(deviceUpgrade, {"mac":"M", "msg":"no", "result": 1}))"},
        {R"("deviceUpgrade","mac":"M","result":1)", -31},
        {R"("deviceUpgrade","msg":"no")", -31},
        {R"("cfgReportProgress","mac":"M","result":3)", 0,
         post + R"(cfgReportProgress, {"mac":"M", "result": 3}))", "handle receive cfgReportProgress : 3"},
        {R"("cfgReportProgress","progress":3)", -3},
        {R"("deviceConnect","mac":"M","devName":"N","time":17)", 0,
         post + R"(deviceConnet, {"mac":"M", "name": "N", "time": 17}))", "mac:M"},
        {R"("deviceConnect","mac":"M","devName":"a \"9\" \\","time":17)", 0,
         post + R"(deviceConnet, {"mac":"M", "name": "a \"9\" \\", "time": 17}))"},
        {R"("deviceConnect","devName":"N")", -4, "", "get mac fail"},
        {R"("deviceConnect","mac":"M")", -5, "", "get device name fail"},
        {R"("allDevicesReport")", 0, "", "", "report"},
        {R"("networkRestartTime","mac":"M","interfaceName":"I","networkDelay":30)", 0,
         post + R"(networkRestartTime, {"mac":"M", "interfaceName":"I", "networkDelay": 30}))"},
        {R"("networkRestartTime")", 0,
         post + R"(networkRestartTime, {"mac":"", "interfaceName":"", "networkDelay": 0}))"},
        {R"("outFormatFeedback","result":0)", 0, post + R"(outFormatFeedback, {"result": 0}))"},
        {R"("outFormatFeedback")", 0, post + R"(outFormatFeedback, {"result": 1}))"},
        {R"("RemoteCapSuccess")", 0, post + R"(RemoteCapSuccess, {"result": "https://host/?id=1"}))",
         "realurl: https://host/?id=1"},
        {R"("unknown")", 0},
        {"5", 0},
        {"null", -2, "", "msg has no action"},
        {"[", -1, "", "parse JSON fail"},
    };
    for (const Row &row : rows)
        expect(row);
    EXPECT_EQ(handle("[]"), -2);
    EXPECT_EQ(handle(""), -1);
    EXPECT_EQ(handle("null"), -1);
}

TEST_F(Relay, OnlyTheIntervalsPassWhileOffline) {
    const char offline[] = "event need report ,but device is offline! so it will not upload data!";
    recording_sdk::set_connect_state(0);
    expect({R"("updatesettime","otaCheckInterval":1)", 0, "update_checkTime(1, 0, 0)", "", "interval 1"});
    for (const char *action : {"\"upgradeProgress\"", "\"deviceUpgrade\"", "\"cfgReportProgress\"",
                               "\"deviceConnect\"", "\"allDevicesReport\"", "\"networkRestartTime\"",
                               "\"outFormatFeedback\"", "\"RemoteCapSuccess\"", "\"unknown\""})
        expect({action, 0, "", offline});
}

TEST_F(Relay, LongTextsAreCutToTheirFields) {
    const std::string mac(100, 'm'), name(300, 'n');
    handle(R"({"action":"networkRestartTime","mac":")" + mac + R"(","interfaceName":")" + name + "\"}");
    handle(R"({"action":"deviceConnect","mac":")" + mac + R"(","devName":")" + name + "\"}");
    const auto posted = recording_sdk::calls();
    EXPECT_EQ(posted.at(0).arguments[1],
              R"({"mac":")" + mac.substr(0, 63) + R"(", "interfaceName":")" + name.substr(0, 108));
    EXPECT_EQ(posted.at(1).arguments[1],
              R"({"mac":")" + mac + R"(", "name": ")" + name.substr(0, 65) + R"(", "time": -1})");
}

TEST_F(Relay, WithstandsAnyBytes) {
    set_log_filepath("/dev/null");
    std::mt19937 random(20240501);
    const std::string good =
        R"({"action":"deviceConnect","mac":"A1:B2:C3:D4:E5:F6","devName":"a \u00e4 b","time":1714550587})";
    for (int round = 0; round < 20000; round++) {
        std::string datagram = good; // with bytes changed, or noise
        if (round % 2 == 0) datagram.resize(random() % (EVENT_MAX + 1));
        for (size_t changes = round % 2 == 0 ? datagram.size() : random() % 4 + 1; changes > 0; changes--)
            datagram[random() % datagram.size()] = static_cast<char>(random());
        int result = handle(datagram);
        ASSERT_TRUE(result <= 0 && result >= -31);
    }
    for (std::string hostile :
         {std::string(1024, '['), "{\"action\":\"deviceConnect\",\"mac\":" + std::string(990, '{'),
          std::string(1024, '\0'), "{\"action\":\"\xff\xfe\"}" + std::string(500, '\0')})
        EXPECT_LE(handle(hostile), 0);
    EXPECT_EQ(handle_qvtk_event(nullptr, 5), -1);
    EXPECT_EQ(handle_qvtk_event("{}", -5), -1);
}

TEST_F(Relay, ServesTheSocketUntilTheFlagFallsAndOneMoreDatagramComes) {
    std::atomic<int> flag{1};
    ASSERT_EQ(creat_event_server(), 0);
    EXPECT_EQ(creat_event_server(), -1);  // taken
    take_event_port(INADDR_LOOPBACK + 1); // that of another address is not
    ASSERT_EQ(creat_event_client(), 0);
    std::thread relay([&] { eventudp_server(&flag); });
    udp_send_data("", 0); // skipped

    copy_text(global_config.mac, "A1:B2:C3:D4:E5:F6");
    app_waitTime = 25;
    char mac[64];
    int delay = 0;
    EXPECT_EQ(get_networkRestartTime_info(mac, 4, &delay), 0);
    EXPECT_STREQ(mac, "A1:");
    ASSERT_EQ(get_networkRestartTime_info(mac, sizeof mac, &delay), 0);
    send_restart_event(mac, "LAN", delay);
    ASSERT_TRUE(recording_sdk::wait_for("TEBRA_SDK_PostEvent"));
    EXPECT_THAT(recording_sdk::lines(),
                ElementsAre("TEBRA_SDK_PostEvent(networkRestartTime, {\"mac\":\"A1:B2:C3:D4:E5:F6\", "
                            "\"interfaceName\":\"LAN\", \"networkDelay\": 25})"));

    // one of exactly the greatest size is taken whole
    std::string full = R"({"action":"upgradeProgress","progress":77,"fill":")";
    full += std::string(EVENT_MAX - full.size() - 2, 'f') + "\"}";
    udp_send_data(full.data(), static_cast<int>(full.size()));
    ASSERT_TRUE(recording_sdk::wait_for("TEBRA_SDK_PostUpgress"));
    EXPECT_TRUE(has_logged("qvtk eventupd server receive msg:" + full));

    flag = 0; // ends a blocked receive only with one more datagram
    std::string last = R"({"action":"outFormatFeedback"})";
    udp_send_data(last.data(), static_cast<int>(last.size()));
    relay.join();
    EXPECT_TRUE(has_logged("eventudp_server will exit!"));
    close_event_client();
    EXPECT_EQ(udp_send_data("x", 1), 0);
}

TEST_F(Relay, EndsTheProcessWhenItsSocketFails) {
    std::atomic<int> flag{1};
    EXPECT_EXIT(eventudp_server(&flag), testing::ExitedWithCode(1),
                "eventudp_server recvfrom\\(\\) error.\n");
}

} // namespace
