// SPDX-License-Identifier: Apache-2.0
// What happens to the router by itself: hours, tasks, restarts.
#include "sim/router/steps.h"

namespace {

// The home's clock starts on a Wednesday at 08:00.
TEST(World, KeepsStationsOutUntilTheyAreReleased) {
    const std::vector<Step> steps = {
        {R"(vrop.firewall.filter filterAdd {"filterOp":"black","filterType":"mac","enable":1,"mac":"02a0c9000003"})",
         "/vrop.laninfo/2/active=1"},
        {R"(vrop.firewall.filter filterSet {"switch":1,"filterOp":"black"})",
         "/vrop.laninfo/2/active=0 /vrop.laninfo/2/uptime= /vrop.laninfo/3/active=1"},
        // an entry that is there is changed, and keeps its index
        {R"(vrop.firewall.filter filterAdd {"filterOp":"black","filterType":"mac","enable":0,"mac":"02A0C9000003"})",
         "/vrop.firewall.filter/macfilterLists/1/index=1 /vrop.firewall.filter/macfilterLists/2= "
         R"(/vrop.laninfo/2/active=1 /vrop.laninfo/2/radio="5G" /vrop.laninfo/2/uptime=0)"},
        {R"(vrop.parent.control setdev {"mac":"02a0c9000005","disconnect":1,"disconnecttime":600})",
         "/vrop.laninfo/4/active=0"},
        {R"(sim elapse {"seconds":599})", "/vrop.laninfo/4/active=0"},
        {R"(sim elapse {"seconds":1})", "/vrop.laninfo/4/active=1"},
        {R"(vrop.parent.control setdev {"mac":"02a0c9000005","disconnect":1,"disconnecttime":600})",
         "/vrop.laninfo/4/active=0"},
    };
    router::Router router;
    play(router, steps);
    EXPECT_THAT(call(router, R"(sim station {"mac":"02a0c9000005","radio":"5G"})"),
                testing::HasSubstr("is kept out"));
    EXPECT_EQ(router.value("/vrop.laninfo/4/active"), "0");
}

TEST(World, KeepsSupervisedStationsToTheirHours) {
    play({
        // Wednesday 08:00; the tablet has 07:00-19:30 on weekdays, 08:30-21:05 at weekends
        {R"(sim elapse {"seconds":41399})", "/vrop.laninfo/4/active=1"},
        {R"(sim elapse {"seconds":1})", "/vrop.laninfo/4/active=0"},
        {R"(vrop.parent.control setenable {"enable":0})", "/vrop.laninfo/4/active=1"},
        {R"(vrop.parent.control setenable {"enable":1})", "/vrop.laninfo/4/active=0"},
        {R"(vrop.parent.control setdev {"mac":"02a0c9000005","devtimeenable":0})",
         "/vrop.laninfo/4/active=1"},
        {R"(vrop.parent.control setdev {"mac":"02a0c9000005","devtimeenable":1})",
         "/vrop.laninfo/4/active=0"},
        // a window from Wednesday into Thursday
        {R"(vrop.parent.timecontrol add {"enable":1,"timestart":"1900","timeend":"0100","mac":"02a0c9000005","week":"3"})",
         "/vrop.laninfo/4/active=1"},
        {R"(sim elapse {"seconds":19799})", "/vrop.laninfo/4/active=1"},
        {R"(sim elapse {"seconds":1})", "/vrop.laninfo/4/active=0"},
        {R"(vrop.parent.timecontrol delete {"index":-1111,"mac":"02a0c9000005"})",
         "/vrop.laninfo/4/active=1"},
        {R"(vrop.parent.timecontrol add {"enable":0,"timestart":"0700","timeend":"0800","mac":"02a0c9000005","week":"0"})",
         "/vrop.laninfo/4/active=1"},
    });
}

TEST(World, CarriesOutScheduledTasks) {
    play({
        // Monday to Friday 22:30 to 06:00, Saturdays at 12:00 for an hour
        {R"(vrop.timer add {"action":"ToLedMode","timeoffset":81000,"timeoffset2":21600,"enable":1,"week":62})"},
        {R"(vrop.timer add {"action":"ToWifi","timeoffset":43200,"timeoffset2":46800,"enable":1,"week":64})"},
        {R"(sim elapse {"seconds":52199})", R"(/vrop.ledswitch/status="on")"},
        {R"(sim elapse {"seconds":1})", R"(/vrop.ledswitch/status="off")"}, // Wednesday 22:30
        {R"(sim elapse {"seconds":27000})", R"(/vrop.ledswitch/status="on")"},
        {R"(sim elapse {"seconds":172800})", R"(/vrop.ledswitch/status="on")"}, // Saturday 06:00
        {R"(sim elapse {"seconds":21600})", "/vrop.webwifisimple/wifiswitch=0 /vrop.wifi.2.ap/0/enable=0"},
        {R"(sim elapse {"seconds":604800})",
         "/vrop.webwifisimple/wifi24apenable=0"}, // a week later, on the hour
        {R"(sim elapse {"seconds":3600})",
         "/vrop.webwifisimple/wifi24apenable=1 /vrop.webwifisimple/wifiswitch=1"},
        {R"(vrop.timer.modify set {"action":"ToReboot","taskid":1,"enable":1})"},
        {R"(sim elapse {"seconds":86400})", "/vrop.homewebinfo/uptime=0"}, // Sundays and Saturdays at 04:00
        // at the end of its time
        {R"(sim setstate {"pointer":"/sim/time","value":"2147483646"})"},
        {R"(sim setstate {"pointer":"/vrop.homewebinfo/uptime","value":"2147483646"})"},
        {R"(sim elapse {"seconds":9})", "/sim/time=2147483647 /vrop.homewebinfo/uptime=2147483647"},
    });
}

TEST(World, GoesAwayWithARebootAndKeepsOfAResetWhatItsLevelSays) {
    router::Router router(R"({"sim":{"restartdelay":1,"boottime":1}})");
    router.start();
    for (const auto &[level, led, ssid, wan] : {std::tuple("0", "on", "Home", "DHCP"),
                                                {"1", "on", "Home", "BRIDGE"},
                                                {"2", "on", "Mine", "BRIDGE"}}) {
        play(router, {{R"(vrop.ledswitch set {"status":"off"})"},
                      {R"(vrop.webwifisimple set {"wifi24ssid":"Mine"})"},
                      {R"(vrop.waninfo set {"networktype":"BRIDGE"})"}});
        EXPECT_EQ(call(router, std::string(R"(vrop reset {"resetlevel":)") + level + "}"), DONE);
        EXPECT_TRUE(router.wait_for_state("/vrop.homewebinfo/uptime", "0"));
        EXPECT_EQ(router.value("/vrop.ledswitch/status"), '"' + std::string(led) + '"') << level;
        EXPECT_EQ(router.value("/vrop.wifi.1.ap/0/ssid"), '"' + std::string(ssid) + '"') << level;
        EXPECT_EQ(router.value("/vrop.waninfo/networktype"), '"' + std::string(wan) + '"') << level;
        router.elapse(1);
    }
    play(router, {{R"(vrop.ecm set {"cutusb":1})", "/vrop.ecm/mounted=0"},
                  {R"(sim setstate {"pointer":"/sim/boottime","value":"60000"})"},
                  {"vrop reboot"}});
    EXPECT_TRUE(router.wait_for_state("/vrop.ecm/mounted", "1"));
}

} // namespace
