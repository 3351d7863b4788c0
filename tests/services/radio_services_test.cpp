// SPDX-License-Identifier: Apache-2.0
// Channels, neighbours and how well stations are heard: what is answered, and what is asked of the router.
#include "core/report_gate.h"
#include "services/service_rig.h"

namespace {

TEST(RadioServices, AnswerWhatTheRadiosSay) {
    ServiceRig rig(R"({"sim":{"neighbours":[[
        {"ssid":"B","bssid":"02","channel":6,"rssi":-71,"authmode":"WPA2-PSK"},
        {"ssid":"","bssid":"03","rssi":-10},{"ssid":"no address","rssi":-10},7,
        {"ssid":"A \"q\"","bssid":"01","channel":1,"rssi":-48,"authmode":"NONE"},
        {"ssid":"B","bssid":"02","channel":6,"rssi":-75,"authmode":"WPA2-PSK"}],{}]},
        "vrop.wifi.2":{"channelscore":[{"channel":36,"score":45},{"channel":44}]},
        "vrop.webwifi2adv":{"currentchannel":44},
        "vrop.laninfo":[{"mac":"02a0c9000001","devname":"","hostname":"a","active":1,"radio":"5G","rssi":-65},
        {"mac":"02a0c9000002","devname":"b","active":1,"radio":"2.4G","rssi":-66},
        {"mac":"02a0c9000003","devname":"c","active":1,"radio":"2.4G","rssi":-76},
        {"mac":"02a0c9000004","active":0,"radio":"5G","rssi":-50},{"mac":"02a0c9000005","active":1,"radio":"0"},{}]})");
    const std::string first = R"({"mac":"02a0c9000001","name":"a","radio":2,"rssi":-65,"quality":0})",
                      second = R"({"mac":"02a0c9000002","name":"b","radio":1,"rssi":-66,"quality":1})",
                      third = R"({"mac":"02a0c9000003","name":"c","radio":1,"rssi":-76,"quality":2})";
    const struct {
        const char *service;
        const char *request;
        std::string answer;
    } cases[] = {
        {"channelQuality", R"({"radio":2})",
         R"(0: 200 channelQuality {"radios":[{"radio":2,"current":44,"channels":[{"channel":36,"score":45},{"channel":44,"score":0}]}]})"},
        {"relayScan", R"({"radio":0})",
         R"(0: 200 relayScan {"relayList":[{"ssid":"A \"q\"","bssid":"01","channel":1,"rssi":-48,"encryption":0},)"
         R"({"ssid":"B","bssid":"02","channel":6,"rssi":-71,"encryption":2}]})"},
        {"relayScan", R"({"radio":1})", "-1: 400 relayScan {}"}, // the daemon gives no list
        {"rssiQualityCheck", nullptr,
         "0: 200 rssiQualityCheck {\"devices\":[" + first + "," + second + "," + third + "]}"},
        {"rssiQualityCheck", R"({"mac":"02:A0:C9:00:00:02"})",
         "0: 200 rssiQualityCheck {\"devices\":[" + second + "]}"},
        {"rssiQualityCheck", R"({"mac":"02a0c9000004"})", "0: 200 rssiQualityCheck {\"devices\":[]}"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(rig.call(c.service, c.request), c.answer);
}

TEST(RadioServices, RefuseBadRequestsAndAnUnansweredBus) {
    ServiceRig rig;
    const char *const services[] = {"channelQuality", "tuningWifi", "relayScan", "rssiQualityCheck"};
    const auto refusal = [](std::string service) { return "-1: 400 " + service + " {}"; };
    for (const char *service : services)
        for (const char *bad : {"x", R"({"radio":3,"mac":"zz"})", R"({"radio":-1,"mac":"02a0c900000"})"})
            EXPECT_EQ(rig.call(service, bad), refusal(service)) << bad;
    rig.router.add_fault({.kind = router::Fault::Kind::Absent, .object = "vrop.*"});
    for (const char *service : services)
        EXPECT_EQ(rig.call(service, R"({"radio":1})"), refusal(service));
    EXPECT_EQ(set_flag, 0);
}

TEST(TuningWifi, MovesOnlyWhereItPaysAndSaysSoBefore) {
    ServiceRig rig;
    rig.router.set_state("/vrop.webwifi1adv/currentchannel", "1");
    rig.router.set_state("/vrop.webwifi2adv/currentchannel", "36");
    auto scores = [&](const char *radio, int present, int best) {
        rig.router.set_state(std::string("/vrop.wifi.") + radio + "/channelscore",
                             std::string(R"([{"channel":)") + (radio[0] == '1' ? "1" : "36") +
                                 R"(,"score":)" + std::to_string(present) + R"(},{"channel":)" +
                                 (radio[0] == '1' ? "11" : "149") + R"(,"score":)" + std::to_string(best) +
                                 "}]");
    };
    scores("1", 60, 70);
    scores("2", 60, 69);
    int flag_while_moving = 0;
    moving_clock::on_pause([&](moving_clock::Millis) { flag_while_moving = set_flag; });
    EXPECT_EQ(rig.call("tuningWifi", "{}"),
              R"(0: 200 tuningWifi {"radios":[{"radio":1,"from":1,"to":11,"score":70,"changed":true},)"
              R"({"radio":2,"from":36,"to":36,"score":60,"changed":false}]})");
    EXPECT_EQ(flag_while_moving, 1);
    EXPECT_EQ(set_flag, 0);
    ASSERT_EQ(rig.writes().size(), 1u);
    EXPECT_THAT(rig.writes()[0], testing::HasSubstr(R"(vrop.webwifi1adv set {"channel":11})"));

    scores("2", 10, 90);
    rig.router.add_fault(
        {.kind = router::Fault::Kind::Result, .object = "vrop.webwifi2adv", .method = "set", .value = 1});
    EXPECT_EQ(rig.call("tuningWifi", R"({"radio":2})"),
              R"(0: 200 tuningWifi {"radios":[{"radio":2,"from":36,"to":36,"score":10,"changed":false}]})");
}

} // namespace
