// SPDX-License-Identifier: Apache-2.0
// What happens to the router by itself: WAN, cable, stations, time, flashing.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "sim/router/bus_caller.h"
#include "support/text_file.h"

namespace {

TEST(World, ChangesByWhatHappensAndByTime) {
    const std::vector<Step> steps = {
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
    };
    router::Router router;
    play(router, steps);
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
    BusCaller client;
    EXPECT_EQ(client.id("vrop.ledswitch"), 0U);
    EXPECT_NE(client.id("sim"), 0U);
}

TEST(World, StartsFromAPatchOfTheHome) {
    router::Router router(R"({"vrop.ftinfo":{"sn":"","areaCode":null},"vrop.laninfo":[]})");
    EXPECT_EQ(router.value("/vrop.fota/sn"), R"("")");
    EXPECT_EQ(router.value("/vrop.ftinfo/areaCode"), "");
    EXPECT_EQ(router.value("/vrop.ftinfo/model"), R"("AX3000")");
    EXPECT_EQ(router.value("/vrop.laninfo"), "[]");
    EXPECT_THROW(router::Router("[]"), std::runtime_error);
    EXPECT_THROW(router.set_state("/vrop.none/x", "1"), std::runtime_error);
    EXPECT_THROW(router.set_state("/vrop.ftinfo/sn", "{"), std::runtime_error);
    EXPECT_THROW(router.erase_state("/vrop.none/x"), std::runtime_error);
}

} // namespace
