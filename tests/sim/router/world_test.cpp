// SPDX-License-Identifier: Apache-2.0
// What happens to the router by itself: WAN, cable, stations, time, flashing.
#include <filesystem>
#include <fstream>

#include "sim/router/bus_caller.h"

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

TEST(World, LeavesThePingResultAndTheExportWhereTheyAreLookedFor) {
    router::Router router(R"({"sim":{"ping":{"loss":25}}})");
    play(router, {{R"(vrop.diagnosis ping {"host":"ping.example","num":4})"}, {"vrop configexport"}});
    std::ifstream ping("/aptmp/pingrt");
    std::string title, loss, times;
    std::getline(std::getline(std::getline(ping, title), loss), times);
    EXPECT_EQ(loss, "4 packets transmitted, 3 packets received, 25% packet loss");
    EXPECT_EQ(times, "round-trip min/avg/max = 8.120/9.334/12.871 ms");
    EXPECT_GT(std::filesystem::file_size("/aptmp/cfg_export_config_file.conf"), 0U);
}

} // namespace
