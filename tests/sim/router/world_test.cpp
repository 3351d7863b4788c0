// SPDX-License-Identifier: Apache-2.0
// What happens to the router by itself: WAN, cable, stations, time, flashing.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "sim/router/json.h"
#include "sim/router/steps.h"
#include "support/text_file.h"

namespace {

TEST(World, ChangesByWhatHappensAndByTime) {
    play({
        {R"(sim cable {"status":"out"})",
         R"(/vrop.homewebinfo/phyStatus="unplug" /vrop.waninfo/status="Unconnected")"},
        {R"(sim cable {"status":"in"})", R"(/vrop.homewebinfo/status="Connected")"},
        {R"(sim wan {"status":"down"})",
         R"(/vrop.homewebinfo/phyStatus="plugin" /vrop.homewebinfo/status="Unconnected")"},
        {R"(sim station {"mac":"02a0c9000007","radio":"5G"})",
         R"(/vrop.laninfo/6/ssid="Home_5G" /vrop.laninfo/6/uptime=0)"},
        {R"(sim elapse {"seconds":30})", "/vrop.laninfo/6/uptime=30 /vrop.homewebinfo/uptime=86553"},
        {R"(sim station {"mac":"02a0c9000007","radio":"away"})",
         "/vrop.laninfo/6/active=0 /vrop.laninfo/6/uptime="},
        {R"(sim station {"mac":"02:A0:C9:00:00:AA","radio":"0"})",
         R"(/vrop.laninfo/10/mac="02a0c90000aa" /vrop.laninfo/10/hostname="station-111")"},
        // guest networks close when their time is over
        {R"(vrop.wifi.1.ap.modify set {"index":2,"enable":1,"hide":0})"},
        {R"(vrop.wifi.2.ap.modify set {"index":2,"enable":1,"hide":0})"},
        {R"(vrop.wifi.guestwificontrol set {"controlenable":1,"keeptime":2,"noteffectflag":0})"},
        {R"(sim elapse {"seconds":7199})", "/vrop.wifi.1.ap/2/enable=1"},
        {R"(sim elapse {"seconds":1})",
         "/vrop.wifi.1.ap/2/enable=0 /vrop.wifi.2.ap/2/hide=1 /vrop.wifi.guestwificontrol/controlenable=0"},
        // a disconnected device comes back
        {R"(vrop.parent.control setdev {"mac":"02a0c9000005","disconnect":1,"disconnecttime":600})"},
        {R"(sim elapse {"seconds":599})", "/vrop.parent.control/device/0/disconnect=1"},
        {R"(sim elapse {"seconds":1})", "/vrop.parent.control/device/0/disconnect=0"},
    });
}

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
        {R"(vrop.firewall.filter filterSet {"switch":1,"filterOp":"white"})",
         "/vrop.laninfo/2/active=0 /vrop.laninfo/3/active=0"},
        {R"(sim station {"mac":"02a0c9000004","radio":"away"})"},
        {R"(vrop.firewall.filter filterSet {"switch":0,"filterOp":"black"})",
         "/vrop.laninfo/2/active=1 /vrop.laninfo/3/active=0"},
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
    });
}

TEST(World, ShowsTheRatesOfItsStationsAndMakesMany) {
    router::Router router;
    const auto rates = [&](int at) {
        const JsonRoot root = router::parse_json(call(router, "vrop.laninfo list"));
        json_object *station =
            router::element(router::member(root.get(), "vrop.laninfo"), static_cast<size_t>(at));
        return router::text_of(station, "rxrate") + " " + router::text_of(station, "txrate");
    };
    EXPECT_EQ(rates(1), "25.00 0.30");
    play(router, {{R"(vrop.laninfo.sta set {"mac":"02a0c9000002","limitrateswitch":1,"dsbandwidth":2048})"}});
    EXPECT_EQ(rates(1), "2.05 0.30");
    play(router, {{R"(sim station {"mac":"02a0c9000002","radio":"away"})"}});
    EXPECT_EQ(rates(1), "0.00 0.00");
    play(router, {{R"(sim station {"mac":"02a0c7ffffff","radio":"2.4G","count":300})",
                   R"(/vrop.laninfo/10/mac="02a0c7ffffff" /vrop.laninfo/309/mac="02a0c800012a")"}});
}

TEST(World, RunsTheNewVersionAfterAnUpgradeAndTheOldStateAfterAReset) {
    struct ImageRow {
        const char *image, *next_version, *version;
    };
    router::Router router(R"({"sim":{"restartdelay":1}})");
    router.start();
    for (const ImageRow &row : {ImageRow{"no version here", R"("")", R"("V1.0.3")"},
                                {"version=V2.0.0\r\n\x7f\x01", R"("")", R"("V2.0.0")"},
                                {"version=V2.0.0\n", R"("V3.1")", R"("V3.1")"}}) {
        router.set_state("/sim/nextversion", row.next_version);
        router.elapse(1);
        std::ofstream("/aptmp/firmware.img") << row.image;
        play(router, {{R"(vrop upgrade {"downurl":"/aptmp/firmware.img","isreboot":1})"}});
        EXPECT_TRUE(router.wait_for_state("/vrop.homewebinfo/uptime", "0"));
        EXPECT_EQ(router.value("/vrop.ftinfo/iswversion"), row.version);
    }
    play(router, {{R"(vrop.ledswitch set {"status":"off"})"}, {R"(vrop reset {"resetlevel":2})"}});
    EXPECT_TRUE(router.wait_for_state("/vrop.ledswitch/status", R"("on")"));
}

TEST(World, LeavesPingResultsTheStorageStatusAndTheExportWhereTheyAreLookedFor) {
    router::Router router(R"({"sim":{"ping":{"loss":25}}})");
    const auto ping = [&router](const std::string &host) {
        EXPECT_EQ(call(router, R"(vrop.diagnosis ping {"host":")" + host + R"(","num":4})"), DONE);
        return text_of("/aptmp/pingrt");
    };
    constexpr char LOSS[] = "4 packets transmitted, 3 packets received, 25% packet loss\n";
    constexpr char TIMES[] = "round-trip min/avg/max = 8.120/9.334/12.871 ms\n";
    EXPECT_THAT(ping("ping.example"), testing::EndsWith(std::string(LOSS) + TIMES));
    EXPECT_THAT(ping("dead.example.com"), testing::EndsWith(" 0 packets received, 100% packet loss\n"));
    EXPECT_EQ(ping("$(reboot)"), "ping: bad address\n");
    play(router, {{R"(sim storage {"nat_type":4})"}, {"vrop configexport"}});
    EXPECT_EQ(text_of("/aptmp/ecm.status"), "upnp=1\nnat_type=4\nconnect_status=1\n");
    EXPECT_GT(std::filesystem::file_size("/aptmp/cfg_export_config_file.conf"), 0U);
}

TEST(World, MeasuresWhatItsRadiosAndItsLineDo) {
    router::Router router;
    const std::string values = R"({"vrop.wifi.1":{"interferencepercent":)";
    EXPECT_EQ(call(router, "vrop.wifi.1 getinterference"), values + R"(35,"noise":-92}})");
    play(router, {{R"(vrop.webwifi1adv set {"channel":11})"}});
    EXPECT_EQ(call(router, "vrop.wifi.1 getinterference"), values + R"(88,"noise":-74}})");
    play(router, {{R"(sim download {"mac":"02a0c9000006","rate":40})",
                   R"(/vrop.laninfo/5/rxrate="40.00" /vrop.waninfo.wanrate/rxrate_rt="48.00")"},
                  {R"(sim download {"mac":"02a0c9000006","rate":0})",
                   R"(/vrop.laninfo/5/rxrate="0.00" /vrop.waninfo.wanrate/rxrate_rt="8.00")"},
                  {R"(vrop.speedtest setdownload {"url":"http://host/file","time":10,"interval":0})"}});
    std::vector<int> speeds;
    for (int second = 0; second < 12; second++, router.elapse(1))
        call(router, "vrop.speedtest getinfo"),
            speeds.push_back(std::stoi(router.value("/vrop.speedtest/speed").substr(1)));
    EXPECT_EQ(*std::max_element(speeds.begin(), speeds.end()), 11796480);
    EXPECT_LT(speeds.front(), speeds.back());
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
