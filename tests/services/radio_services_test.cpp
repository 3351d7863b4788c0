// SPDX-License-Identifier: Apache-2.0
// Channels, neighbours and how well stations are heard: what is answered, and what is asked of the router.
#include <gmock/gmock.h>

#include "core/report_gate.h"
#include "services/channels.h"
#include "services/neighbours.h"
#include "services/station_quality.h"
#include "support/moving_clock.h"
#include "support/recording_sdk.h"
#include "support/router_rig.h"

namespace {

using Handler = int (*)(uint32_t, uint32_t, void *, void *, const char *);
using Texts = std::vector<std::string>;

// "200 {...}", or how often it was answered when that was not once.
std::string answer_of(Handler handler, const char *request) {
    recording_sdk::clear_calls();
    handler(7, 8, nullptr, nullptr, request);
    const auto calls = recording_sdk::calls_of("TEBRA_SDK_Handle_Response");
    if (calls.size() != 1) return std::to_string(calls.size()) + " answers";
    return calls[0].arguments[2] + " " + calls[0].arguments[3];
}

Texts sets(const router::Router &router) {
    Texts lines;
    for (const router::Call &call : router.calls("*", "set"))
        lines.push_back(call.object + " " + call.arguments);
    return lines;
}

TEST(RadioServices, AnswerWhatTheRadiosSay) {
    RouterRig rig(R"({"sim":{"neighbours":[[
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
        Handler handler;
        const char *request;
        std::string answer;
    } cases[] = {
        {channelQuality_call, R"({"radio":2})",
         R"(200 {"radios":[{"radio":2,"current":44,"channels":[{"channel":36,"score":45},{"channel":44,"score":0}]}]})"},
        {relayScan_call, R"({"radio":0})",
         R"(200 {"relayList":[{"ssid":"A \"q\"","bssid":"01","channel":1,"rssi":-48,"encryption":0},)"
         R"({"ssid":"B","bssid":"02","channel":6,"rssi":-71,"encryption":2}]})"},
        {relayScan_call, R"({"radio":1})", "400 {}"}, // the daemon gives no list
        {rssiQualityCheck_call, nullptr, "200 {\"devices\":[" + first + "," + second + "," + third + "]}"},
        {rssiQualityCheck_call, R"({"mac":"02:A0:C9:00:00:02"})", "200 {\"devices\":[" + second + "]}"},
        {rssiQualityCheck_call, R"({"mac":"02a0c9000004"})", "200 {\"devices\":[]}"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(answer_of(c.handler, c.request), c.answer);
}

TEST(RadioServices, RefuseBadRequestsAndAnUnansweredBus) {
    RouterRig rig;
    const Handler handlers[] = {channelQuality_call, tuningWifi_call, relayScan_call, rssiQualityCheck_call};
    for (Handler handler : handlers)
        for (const char *bad : {"x", R"({"radio":3,"mac":"zz"})", R"({"radio":-1,"mac":"02a0c900000"})"})
            EXPECT_EQ(answer_of(handler, bad), "400 {}") << bad;
    EXPECT_EQ(answer_of(relayScan_call, nullptr), "400 {}");
    rig.router.add_fault({.kind = router::Fault::Kind::Absent, .object = "vrop.*"});
    for (Handler handler : handlers)
        EXPECT_EQ(answer_of(handler, R"({"radio":1})"), "400 {}");
    EXPECT_EQ(sets(rig.router), Texts());
    EXPECT_EQ(set_flag, 0);
}

TEST(TuningWifi, MovesOnlyWhereItPaysAndSaysSoBefore) {
    RouterRig rig;
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
    EXPECT_EQ(answer_of(tuningWifi_call, "{}"),
              R"(200 {"radios":[{"radio":1,"from":1,"to":11,"score":70,"changed":true},)"
              R"({"radio":2,"from":36,"to":36,"score":60,"changed":false}]})");
    EXPECT_EQ(flag_while_moving, 1);
    EXPECT_EQ(set_flag, 0);
    ASSERT_EQ(sets(rig.router).size(), 1u);
    EXPECT_THAT(sets(rig.router)[0], testing::HasSubstr(R"(vrop.webwifi1adv {"bandwidth":)"));
    EXPECT_EQ(rig.router.value("/vrop.webwifi1adv/channel"), "11");

    scores("2", 10, 90);
    rig.router.add_fault(
        {.kind = router::Fault::Kind::Result, .object = "vrop.webwifi2adv", .method = "set", .value = 1});
    EXPECT_EQ(answer_of(tuningWifi_call, R"({"radio":2})"),
              R"(200 {"radios":[{"radio":2,"from":36,"to":36,"score":10,"changed":false}]})");
}

} // namespace
