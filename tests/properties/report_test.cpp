// SPDX-License-Identifier: Apache-2.0
// What is read from the daemon, and when it is posted.
#include <gmock/gmock.h>

#include "core/report_gate.h"
#include "properties/device_status.h"
#include "properties/mesh.h"
#include "properties/network_info.h"
#include "properties/property_rig.h"
#include "properties/time_led.h"
#include "properties/time_reboot.h"
#include "properties/visitor_wifi.h"
#include "properties/wifi_senior.h"

namespace {

using testing::HasSubstr;

// One change of the router (no JSON: something is gone) and what the document must hold then. Rows of one
// test follow one another in one run of the agent.
struct Reading {
    const char *property, *pointer, *json, *holds;
};

TEST(Reading, GivesWhatTheDaemonSays) {
    const Reading readings[] = {
        {"deviceInfo", "/vrop.ftinfo/areaCode", "", R"("areaCode":"")"}, // no province without it
        {"deviceInfo", "/vrop.ftinfo/areaCode", R"("1")", R"("areaCode":"330000")"},
        {"deviceInfo", "/vrop.ftinfo/mac", R"("0a1b2c3d4e5f")", R"("mac":"0A:1B:2C:3D:4E:5F")"},
        {"deviceInfo", "/vrop.ftinfo/sn", R"("")", R"("sn":"0a1b2c3d4e5f")"},
        {"deviceInfo", "/vrop.ftinfo/ihdversion", "", R"("hdVersion":"H2")"},
        {"deviceInfo", "/vrop.ftinfo/province", "", R"("areaCode":"330000")"},
        {"deviceInfo", "/vrop.ftinfo/odmvendor", "", R"("manufacturer":"RVXA")"},
        {"deviceInfo", "/vrop.ftinfo/model", "", R"("deviceModel":"AX3000")"}, // once read, it stays
        {"deviceInfo", "/vrop.ftinfo/vrei", R"("1")", R"("1","ip":"198.51.100.23","onlineTime":86523}})"},
        {"deviceStatus", "/vrop.waninfo.wanrate/rxrate_rt", R"("8")",
         R"({"linkStatus":0,"networkStatus":0,"upSpeed":65536,"downSpeed":1048576})"},
        {"deviceStatus", "/vrop.waninfo.wanrate/txrate_rt", "", R"("upSpeed":65536)"},
        {"deviceStatus", "/vrop.homewebinfo/phyStatus", R"("unplug")", R"("linkStatus":2)"},
        {"deviceStatus", "/vrop.homewebinfo/phyStatus", R"("plugin")", R"("linkStatus":2)"},
        {"wifiInfo", "/vrop.wifi.1.ap/0/authmode", R"("SAE")", R"("wifi2gEncryption":3)"},
        {"wifiInfo", "/vrop.wifi.1.ap/0/authmode", "", R"("wifi2gEncryption":-1)"},
        {"wifiInfo", "/vrop.wifi.1.ap/0/ssid", "\"a\xff\"", "\"wifi2gName\":\"a\xef\xbf\xbd\""},
        {"wifiInfo", "/vrop.webwifisimple/wifidual", "1", R"({"wifiSames":true,"wifiSamesHidden":false)"},
        {"networkProtocol", "/vrop.waninfo/protocoltype", R"("IPX")", R"({"type":0})"},
        {"networkInfo", "/vrop.waninfo/dns", R"("1.1.1.1, 8.8.8.8 x")",
         R"("dns1":"1.1.1.1","dns2":"8.8.8.8"})"},
        {"networkInfo", "/vrop.waninfo/workmode", R"("APCLIENT")",
         R"("relay":{"manualWifiName":"","manualWifiPwd":"","manualEncrytion":0,"sync":0,"relaySignal":0}}}})"},
        {"timeReboot", "/vrop.timer/0/week", "255", R"({"daysOfWeek":[1,1,1,1,1,1,1],"time")"},
        {"timeReboot", "/vrop.timer", "{}", R"({"timeReboot":[]})"},
        {"timeLed", "/vrop.timer", R"([{"action":"ToLedMode","week":1,"enable":1}])",
         R"({"timeLed":[{"daysOfWeek":[0,0,0,0,0,0,1],"timeFrame":"00:00-00:00","open":true}]})"},
    };
    PropertyRig rig;
    for (const Reading &reading : readings) {
        SCOPED_TRACE(std::string(reading.pointer) + " " + reading.json);
        if (*reading.json != '\0')
            rig.router.set_state(reading.pointer, reading.json);
        else
            rig.router.erase_state(reading.pointer);
        EXPECT_THAT(get(reading.property), HasSubstr(reading.holds));
    }
    EXPECT_TRUE(has_logged("use default encrytion"));
}

// --- Posts ---

// Reports post a document once for each change, but for those that cannot tell or do not ask; hooks always.
TEST(Posts, OfWhatChanged) {
    struct Post {
        const char *property;
        int (*post)();
        const char *logged; // in front of the text
        const char *pointer, *before, *after;
        size_t posts_of_two = 1;
    };
    const std::string task = R"({"action":"ToLedMode","timeoffset":60,"timeoffset2":90,"enable":1,"week":3})";
    const std::string one = "[" + task + "]", two = "[" + task + "," + task + "]";
    const std::string three = "[" + task + "," + task + "," + task + "]";
    // clang-format off
    const Post rows[] = {
        {"ledStatus", row("ledStatus").report, "timeLed have change buf:", "/vrop.ledswitch/status", R"("off")", R"("on")"},
        {"wifiInfo", row("wifiInfo").report, "wifiInfo have change buf:", "/vrop.wifi.1.ap/0/enable", "0", "1"},
        {"timeReboot", timeReboot_report, "timeReboot have change buf:", "/vrop.timer/0/week", "1", "2"},
        {"networkInfo", networkInfo_report, "networkInfo have change buf:", "/vrop.waninfo/dnsenable", "0", "1"},
        {"visitorsWifi", visitorWifi_report, "visitorWifi have change buf:", "/vrop.wifi.1.ap/2/enable", "0", "1"},
        {"mesh", mesh_report, "mesh have change buf:", "/vrop.mesh/enable", "0", "1"},
        {"wifi2gSeniorInfo", wifi2g_senior_config_report, "wifiInfo have change buf:", "/vrop.webwifi1adv/txpower", "1", "2"},
        {"wifi5gSeniorInfo", wifi5g_senior_config_report, "wifiInfo have change buf:", "/vrop.webwifi2adv/txpower", "1", "2"},
        {"timeLed", timeLed_report, "timeLed have change buf:", "/vrop.timer", "[]", one.c_str()},
        // the copy of what was posted last holds 127 characters of the LED schedule
        {"timeLed", timeLed_report, "timeLed have change buf:", "/vrop.timer", two.c_str(), three.c_str(), 2},
        {"deviceStatus", deviceStatus_report, "outbuff:", "/vrop.waninfo.wanrate/rxrate_rt", R"("1")", R"("2")", 2},
        {"deviceStatus", row("deviceStatus").connectok_hook, "outbuff:", "/vrop.waninfo.wanrate/rxrate_rt", R"("1")", R"("2")", 2},
        {"deviceInfo", row("deviceInfo").connectok_hook, "outbuff:", "/vrop.ftinfo/model", R"("A")", R"("B")", 2},
    };
    // clang-format on
    for (const Post &c : rows) {
        const bool asks = c.logged != std::string("outbuff:");
        PropertyRig rig;
        for (const char *json : {c.before, c.after}) {
            SCOPED_TRACE(std::string(c.property) + " " + json);
            rig.router.set_state(c.pointer, json);
            rig.forget();
            set_flag = json == c.before ? 1 : 0; // is said, and stops nothing
            EXPECT_EQ(c.post(), 0);
            EXPECT_EQ(c.post(), 0);
            const auto posts = recording_sdk::calls_of("TEBRA_SDK_PostProperty");
            ASSERT_EQ(posts.size(), c.posts_of_two);
            EXPECT_TRUE(has_logged(c.logged + posts.back().arguments[0]));
            EXPECT_EQ(compact(posts.back().arguments[0]), get(c.property));
            EXPECT_EQ(has_logged("APP is setting, wait again!"), asks && set_flag == 1);
            EXPECT_EQ(has_logged("set_flag:0"), asks && set_flag == 0);
        }
    }
}

// A report that comes while another is on its way to the SDK neither waits for it nor overtakes it.
TEST(Posts, TheNewestIsTheLastWord) {
    PropertyRig rig;
    const auto report = row("ledStatus").report;
    Texts changes = {"on", "off"}; // from the last
    rig.router.set_state("/vrop.ledswitch/status", R"("on")");
    recording_sdk::on_post([&] {
        if (changes.empty()) return;
        rig.router.set_state("/vrop.ledswitch/status", "\"" + changes.back() + "\"");
        changes.pop_back();
        EXPECT_EQ(report(), 0);
    });
    EXPECT_EQ(report(), 0);
    recording_sdk::on_post({});
    Texts posted;
    for (const recording_sdk::Call &call : recording_sdk::calls_of("TEBRA_SDK_PostProperty"))
        posted.push_back(compact(call.arguments[0]));
    const std::string on = R"({"ledStatus":"on"})", off = R"({"ledStatus":"off"})";
    EXPECT_THAT(posted, testing::ElementsAre(on, off, on));
}

} // namespace
