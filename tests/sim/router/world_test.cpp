// SPDX-License-Identifier: Apache-2.0
// What happens to the router by itself: WAN, cable, stations, time, flashing.
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "sim/router/bus_caller.h"

namespace {

void write(const char *path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
}

TEST(World, HasAWanAndACable) {
    Home home;
    BusCaller client;
    EXPECT_EQ(client.call("sim", "cable", R"({"status":"out"})"), R"({"result":"0"})");
    EXPECT_EQ(client.call_for("vrop.homewebinfo", "get", "/vrop.homewebinfo/phyStatus"), R"("unplug")");
    EXPECT_EQ(client.call_for("vrop.waninfo", "get", "/vrop.waninfo/status"), R"("Unconnected")");
    EXPECT_EQ(client.call_for("sim", "wan", "/failreason", R"({"status":"up"})"), R"("the cable is out")");
    EXPECT_EQ(client.call("sim", "cable", R"({"status":"in"})"), R"({"result":"0"})");
    EXPECT_EQ(client.call_for("vrop.homewebinfo", "get", "/vrop.homewebinfo/status"), R"("Connected")");
    home.router.wan(false);
    EXPECT_EQ(client.call_for("vrop.homewebinfo", "get", "/vrop.homewebinfo/status"), R"("Unconnected")");
    EXPECT_EQ(client.call_for("vrop.homewebinfo", "get", "/vrop.homewebinfo/phyStatus"), R"("plugin")");
}

TEST(World, HasStationsThatComeAndGo) {
    Home home;
    BusCaller client;
    EXPECT_EQ(client.call("sim", "station", R"({"mac":"02a0c9000007","radio":"5G"})"), R"({"result":"0"})");
    EXPECT_EQ(home.router.value("/vrop.laninfo/6/ssid"), R"("Home_5G")");
    EXPECT_EQ(home.router.value("/vrop.laninfo/6/uptime"), "0");
    home.router.elapse(30);
    EXPECT_EQ(home.router.value("/vrop.laninfo/6/uptime"), "30");
    EXPECT_EQ(client.call("sim", "station", R"({"mac":"02a0c9000007","radio":"away"})"), R"({"result":"0"})");
    EXPECT_EQ(home.router.value("/vrop.laninfo/6/active"), "0");
    EXPECT_EQ(home.router.value("/vrop.laninfo/6/uptime"), "");
    home.router.station("02:A0:C9:00:00:AA", "0");
    EXPECT_EQ(home.router.value("/vrop.laninfo/10/mac"), R"("02a0c90000aa")");
    EXPECT_EQ(client.call_for("vrop.laninfo", "list", "/vrop.laninfo/10/hostname"), R"("station-111")");
    EXPECT_EQ(client.call_for("sim", "station", "/result", R"({"mac":"02a0c90000ab","radio":"away"})"),
              R"("1")");
    EXPECT_EQ(client.call_for("sim", "station", "/result", R"({"mac":"02a0c90000ab","radio":"6G"})"),
              R"("1")");
}

TEST(World, ClosesTheGuestNetworksWhenTheirTimeIsOver) {
    Home home;
    BusCaller client;
    for (const char *object : {"vrop.wifi.1.ap.modify", "vrop.wifi.2.ap.modify"})
        client.call(object, "set", R"({"index":2,"enable":1,"hide":0})");
    client.call("vrop.wifi.guestwificontrol", "set", R"({"controlenable":1,"keeptime":2,"noteffectflag":0})");
    client.call("sim", "elapse", R"({"seconds":7199})");
    EXPECT_EQ(home.router.value("/vrop.wifi.1.ap/2/enable"), "1");
    client.call("sim", "elapse", R"({"seconds":1})");
    EXPECT_EQ(home.router.value("/vrop.wifi.1.ap/2/enable"), "0");
    EXPECT_EQ(home.router.value("/vrop.wifi.2.ap/2/hide"), "1");
    EXPECT_EQ(
        client.call_for("vrop.wifi.guestwificontrol", "get", "/vrop.wifi.guestwificontrol/controlenable"),
        "0");
}

TEST(World, LetsADisconnectedDeviceBackAfterItsTime) {
    Home home;
    home.router.call("vrop.parent.control", "setdev",
                     R"({"mac":"02a0c9000005","disconnect":1,"disconnecttime":600})");
    home.router.elapse(599);
    EXPECT_EQ(home.router.value("/vrop.parent.control/device/0/disconnect"), "1");
    home.router.elapse(1);
    EXPECT_EQ(home.router.value("/vrop.parent.control/device/0/disconnect"), "0");
}

struct ImageRow {
    const char *image, *next_version, *version;
};

TEST(World, RunsTheNewVersionAfterAnUpgrade) {
    const ImageRow rows[] = {
        {"version=V2.0.0\r\n\x7f\x01", R"("")", R"("V2.0.0")"},
        {"version=V2.0.0\n", R"("V3.1")", R"("V3.1")"},
        {"no version here", R"("")", R"("V1.0.3")"},
    };
    for (const ImageRow &row : rows) {
        Home home;
        home.router.set_state("/sim/nextversion", row.next_version);
        home.router.set_state("/sim/restartdelay", "1");
        write("/aptmp/firmware.img", row.image);
        BusCaller client;
        const uint32_t before = client.id("vrop.fota");
        ASSERT_EQ(client.call("vrop", "upgrade", R"({"downurl":"/aptmp/firmware.img","isreboot":1})"),
                  R"({"result":"0"})");
        EXPECT_TRUE(home.router.wait_for_state("/vrop.homewebinfo/uptime", "0"));
        home.router.restart(); // the bus is through with its own restart when this one is
        BusCaller again;
        EXPECT_NE(again.id("vrop.fota"), before);
        EXPECT_EQ(again.call_for("vrop.ftinfo", "get", "/vrop.ftinfo/iswversion"), row.version);
        EXPECT_EQ(again.call_for("vrop.fota", "get", "/vrop.fota/version"), row.version);
        EXPECT_EQ(client.id("vrop.fota"), 0U); // its connection is gone
    }
}

TEST(World, GoesBackToTheFactoryState) {
    Home home;
    home.router.set_state("/sim/restartdelay", "1");
    BusCaller client;
    client.call("vrop.ledswitch", "set", R"({"status":"off"})");
    EXPECT_EQ(client.call("vrop", "reset", R"({"resetlevel":2})"), R"({"result":"0"})");
    EXPECT_TRUE(home.router.wait_for_state("/vrop.ledswitch/status", R"("on")"));
}

TEST(World, LeavesThePingResultAndTheExportWhereTheyAreLookedFor) {
    Home home;
    home.router.set_state("/sim/ping/loss", "25");
    BusCaller client;
    EXPECT_EQ(client.call("vrop.diagnosis", "ping", R"({"host":"ping.example","num":4})"),
              R"({"result":"0"})");
    std::ifstream ping("/aptmp/pingrt");
    std::string title, loss, times;
    std::getline(std::getline(std::getline(ping, title), loss), times);
    EXPECT_EQ(loss, "4 packets transmitted, 3 packets received, 25% packet loss");
    EXPECT_EQ(times, "round-trip min/avg/max = 8.120/9.334/12.871 ms");
    EXPECT_EQ(client.call("vrop", "configexport"), R"({"result":"0"})");
    EXPECT_GT(std::filesystem::file_size("/aptmp/cfg_export_config_file.conf"), 0U);
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
    EXPECT_THROW(router.erase_state("/vrop.timer/first"), std::runtime_error);
    EXPECT_THROW(router.erase_state("/vrop.none/x"), std::runtime_error);
}

} // namespace
