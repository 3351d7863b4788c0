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
using testing::IsEmpty;

// One change of the router and what the document must hold then. Rows of one test follow one another in one
// run of the agent.
struct Reading {
    const char *property, *pointer, *json, *holds;
};

void expect_readings(const std::vector<Reading> &readings) {
    PropertyRig rig;
    for (const Reading &reading : readings) {
        SCOPED_TRACE(std::string(reading.pointer) + " " + reading.json);
        if (*reading.json != '\0')
            rig.router.set_state(reading.pointer, reading.json);
        else
            rig.router.erase_state(reading.pointer);
        EXPECT_THAT(get(reading.property), HasSubstr(reading.holds));
    }
}

TEST(Reading, DeviceInfo) {
    expect_readings({
        {"deviceInfo", "/vrop.ftinfo/mac", R"("0a1b2c3d4e5f")", R"("mac":"0A:1B:2C:3D:4E:5F")"},
        {"deviceInfo", "/vrop.ftinfo/sn", R"("")", R"("sn":"0a1b2c3d4e5f")"},
        {"deviceInfo", "/vrop.ftinfo/sn", "", R"("sn":"0a1b2c3d4e5f")"},
        {"deviceInfo", "/vrop.ftinfo/ihdversion", R"("")", R"("hdVersion":"H2")"},
        {"deviceInfo", "/vrop.ftinfo/hdversion", R"("H3")", R"("hdVersion":"H3")"},
        {"deviceInfo", "/vrop.ftinfo/ihdversion", "", R"("hdVersion":"H3")"},
        {"deviceInfo", "/vrop.ftinfo/province", R"("330100")", R"("areaCode":"330100")"},
        {"deviceInfo", "/vrop.ftinfo/province", "", R"("areaCode":"330100")"},
        {"deviceInfo", "/vrop.ftinfo/odmvendor", "", R"("manufacturer":"RVXA")"},
        {"deviceInfo", "/vrop.ftinfo/model", "", R"("deviceModel":"AX3000")"}, // once read, it stays
        {"deviceInfo", "/vrop.ftinfo/vrei", R"("86")",
         R"("imei":"86","ip":"198.51.100.23","onlineTime":86523}})"},
    });
}

TEST(Reading, DeviceInfoWithoutAreaCodeGivesNoProvince) {
    expect_readings({{"deviceInfo", "/vrop.ftinfo/areaCode", "", R"("areaCode":"")"}});
}

TEST(Reading, DeviceStatus) {
    expect_readings({
        {"deviceStatus", "/vrop.waninfo.wanrate/rxrate_rt", R"("8")",
         R"({"linkStatus":0,"networkStatus":0,"upSpeed":65536,"downSpeed":1048576})"},
        {"deviceStatus", "/vrop.waninfo.wanrate/rxrate_rt", R"("0.5")", R"("downSpeed":65536)"},
        {"deviceStatus", "/vrop.waninfo.wanrate/rxrate_rt", R"("1e30")", R"("downSpeed":2147483647)"},
        {"deviceStatus", "/vrop.waninfo.wanrate/rxrate_rt", R"("nan")", R"("downSpeed":0)"},
        {"deviceStatus", "/vrop.waninfo.wanrate/txrate_rt", "", R"("upSpeed":65536)"},
        {"deviceStatus", "/vrop.homewebinfo/phyStatus", R"("unplug")", R"("linkStatus":2)"},
        {"deviceStatus", "/vrop.homewebinfo/phyStatus", R"("plugin")", R"("linkStatus":2)"},
    });
}

TEST(Reading, Settings) {
    expect_readings({
        {"wifiInfo", "/vrop.wifi.1.ap/0/authmode", R"("WPA2-PSK/WPA3-SAE")", R"("wifi2gEncryption":5)"},
        {"wifiInfo", "/vrop.wifi.1.ap/0/authmode", R"("SAE")", R"("wifi2gEncryption":3)"},
        {"wifiInfo", "/vrop.webwifisimple/wifidual", "1",
         R"({"wifiInfo":{"wifiSames":true,"wifiSamesHidden":false,"wifi2gOpen")"},
        {"visitorsWifi", "/vrop.wifi.1.ap/2/authmode", R"("NONE")", R"("wifi2gOpenPwd":false)"},
        {"visitorsWifi", "/vrop.wifi.1.ap/2/authmode", R"("WPA-PSK/WPA2-PSK")", R"("wifi2gOpenPwd":true)"},
        {"ipv6Status", "/vrop.waninfo/protocoltype", R"("IPv6")", R"({"ipv6Status":{"open":1}})"},
        {"networkProtocol", "/vrop.waninfo/protocoltype", R"("IPv6")", R"({"networkProtocol":{"type":2}})"},
        {"networkProtocol", "/vrop.waninfo/protocoltype", R"("IPv4/IPv6")",
         R"({"networkProtocol":{"type":0}})"},
        {"ipv6Status", "/vrop.waninfo/protocoltype", R"("IPv4/IPv6")", R"({"ipv6Status":{"open":1}})"},
        {"networkProtocol", "/vrop.waninfo/protocoltype", R"("IPX")", R"({"networkProtocol":{"type":0}})"},
        {"networkInfo", "/vrop.waninfo/networktype", R"("PPPoE")",
         R"({"userName":"home@isp","userPwd":"isp-password","mtu":1492,"dnsEnable":false,"dns1":"198.51.100.53","dns2":"198.51.100.54"})"},
        {"networkInfo", "/vrop.waninfo/dns", R"("9.9.9.9")", R"("dns1":"9.9.9.9","dns2":""})"},
        {"networkInfo", "/vrop.waninfo/workmode", R"("MESH")",
         R"({"networkInfo":{"networkMode":3,"networkConnect":{"meshMode":0}}})"},
        {"networkInfo", "/vrop.waninfo/workmode", R"("APCLIENT")",
         R"("relay":{"manualWifiName":"","manualWifiPwd":"","manualEncrytion":0,"sync":0,"relaySignal":0}}}})"},
        {"timeReboot", "/vrop.timer/0/week", "255",
         R"({"timeReboot":[{"daysOfWeek":[1,1,1,1,1,1,1],"time":"04:00","open":false}]})"},
        {"timeReboot", "/vrop.timer", "{}", R"({"timeReboot":[]})"},
        {"timeLed", "/vrop.timer", R"([{"action":"ToLedMode","week":1,"enable":1}])",
         R"({"timeLed":[{"daysOfWeek":[0,0,0,0,0,0,1],"timeFrame":"00:00-00:00","open":true}]})"},
    });
    EXPECT_TRUE(has_logged("use default encrytion"));
}

// --- Posts ---

TEST(Reports, OfTheTablePostOnlyWhatChanged) {
    struct Report {
        const char *property, *pointer, *json, *change_line;
    };
    for (const Report &c : {Report{"ledStatus", "/vrop.ledswitch/status", R"("off")",
                                   R"(timeLed have change buf:{ "ledStatus": "off" })"},
                            Report{"wifiInfo", "/vrop.wifi.1.ap/0/enable", "0", nullptr}}) {
        SCOPED_TRACE(c.property);
        PropertyRig rig;
        set_flag = 1; // is said, and stops nothing
        ASSERT_EQ(row(c.property).report(), 0);
        ASSERT_EQ(row(c.property).report(), 0);
        EXPECT_EQ(posts(), Texts{get(c.property)}) << "the first one, and no second one without a change";
        recording_sdk::clear_calls();
        rig.router.set_state(c.pointer, c.json);
        set_flag = 0;
        ASSERT_EQ(row(c.property).report(), 0);
        ASSERT_EQ(row(c.property).report(), 0);
        EXPECT_EQ(posts(), Texts{get(c.property)});
        if (c.change_line != nullptr) {
            EXPECT_TRUE(has_logged(c.change_line));
        }
    }
    EXPECT_TRUE(has_logged("set_flag:1"));
    EXPECT_TRUE(has_logged("APP is setting, wait again!"));
    EXPECT_TRUE(has_logged("set_flag:0"));
}

TEST(Reports, OfALedThatCannotBeReadPostNothing) {
    PropertyRig rig;
    rig.router.add_fault({.kind = router::Fault::Kind::Result, .object = "vrop.ledswitch", .value = 2});
    EXPECT_EQ(row("ledStatus").report(), -1);
    EXPECT_THAT(posts(), IsEmpty());
    EXPECT_TRUE(has_logged("get led status fail"));
}

// In no table; each posts a changed document once, but for the two that cannot tell or do not ask.
TEST(Reports, OfTheOtherModules) {
    struct Report {
        const char *property;
        int (*report)();
        size_t posts_of_two;
    };
    const Report REPORTS[] = {
        {"timeReboot", timeReboot_report, 1},
        {"networkInfo", networkInfo_report, 1},
        {"visitorsWifi", visitorWifi_report, 1},
        {"mesh", mesh_report, 1},
        {"wifi2gSeniorInfo", wifi2g_senior_config_report, 1},
        {"wifi5gSeniorInfo", wifi5g_senior_config_report, 1},
        {"timeLed", timeLed_report, 1},
        {"deviceStatus", deviceStatus_report, 2},
    };
    for (const Report &c : REPORTS) {
        SCOPED_TRACE(c.property);
        PropertyRig rig;
        EXPECT_EQ(c.report(), 0);
        EXPECT_EQ(c.report(), 0);
        EXPECT_EQ(posts(), Texts(c.posts_of_two, get(c.property)));
    }
}

// The copy of what was posted last holds 127 characters of the LED schedule.
TEST(Reports, OfALongLedScheduleAlwaysPost) {
    PropertyRig rig;
    const std::string task =
        R"({"action":"ToLedMode","taskid":1,"timeoffset":60,"timeoffset2":90,"enable":1,"week":3})";
    std::string two = "[" + task + "]";
    const std::string one = two;
    two.insert(1, task + ",");
    for (const auto &[tasks, posts_of_two] : {std::pair{one, 1U}, {two, 2U}}) {
        rig.router.set_state("/vrop.timer", tasks);
        recording_sdk::clear_calls();
        EXPECT_EQ(timeLed_report(), 0);
        EXPECT_EQ(timeLed_report(), 0);
        EXPECT_EQ(posts().size(), posts_of_two) << tasks;
    }
}

TEST(Hooks, PostEachTimeTheLinkComesUp) {
    for (const char *property : {"deviceInfo", "deviceStatus"}) {
        PropertyRig rig;
        const std::string document = get(property);
        EXPECT_EQ(row(property).connectok_hook(), 0);
        EXPECT_EQ(row(property).connectok_hook(), 0);
        EXPECT_EQ(posts(), (Texts{document, document}));
    }
}

} // namespace
