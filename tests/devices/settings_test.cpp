// SPDX-License-Identifier: Apache-2.0
// Requests for client devices: what is written of them, in which order, and what is refused.
#include "tests/devices/settings_rig.h"

#include <filesystem>
#include <fstream>

#include "core/report_gate.h"
#include "devices/mac_filter.h"
#include "devices/online_notice.h"
#include "support/text_file.h"

namespace {

using router::Fault;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char RUNTIMES[] = "/aptmp/client_runTime.log";
constexpr char FILTERED[] = "02a0c90000ff"; // in the home's filter, which is off

struct Settings : testing::Test {
    SettingsRig rig;
};

// What one request with one element writes.
TEST_F(Settings, WriteWhatDiffers) {
    struct Row {
        std::string element;
        std::vector<std::string> writes;
    };
    const std::string add_pc =
        R"(firewall.filter filterAdd {"filterOp":"black","filterType":"mac","enable":1,"protocol":0,"mac":"02a0c9000001","platform":0})";
    const Row rows[] = {
        {applied(PC, R"("name":"Big \"PC\"")"),
         {R"(laninfo.sta set {"mac":"02a0c9000001","devname":"Big \"PC\""})"}},
        {applied("02a0c9000004", R"("name":"bens-phone")"), {}}, // its own name, since it was given none
        {applied(PC, R"("limitSpeed":{"open":false,"upSpeed":9})"), {}},
        {applied("02a0c9000002", R"("limitSpeed":{"open":true,"upSpeed":0,"downSpeed":7})"),
         {R"(laninfo.sta set {"limitrateswitch":1,"dsbandwidth":7,"mac":"02a0c9000002"})"}},
        {applied(PC, R"("limitSpeed":{"open":true,"upSpeed":100})"),
         {R"(laninfo.sta set {"limitrateswitch":1,"usbandwidth":100,"mac":"02a0c9000001"})"}},
        {applied(TABLET, R"("limitSpeed":{"open":1,"upSpeed":2048,"downSpeed":8192})"), {}},
        {applied(TABLET, R"("limitSpeed":{"open":1,"upSpeed":2048,"downSpeed":8193})"),
         {R"(laninfo.sta set {"limitrateswitch":1,"dsbandwidth":8193,"usbandwidth":2048,"mac":"02a0c9000005"})"}},
        {applied(PC, R"("blackEnable":true)"),
         {R"(firewall.filter filterSet {"switch":1,"filterOp":"black"})", add_pc}},
        {applied(PC, R"("blackEnable":1)"), {}},
        {applied(PC, R"("name":"Big \"PC\"")"), {}}, // without "blackEnable" it stays blocked
        {applied(PC, R"("blackEnable":0)"),
         {R"(firewall.filter filterDelete {"filterType":"mac","index":1,"platform":0})"}},
        {applied(PC, R"("blackEnable":0)"), {}}, // not in the list: said, not done
        {applied(TABLET, R"("disconnect":0)"), {}},
        {applied(TABLET, R"("disconnect":3)"),
         {R"(parent.control setdev {"disconnect":3,"disconnecttime":1800,"disconnectsettime":1714550400,"mac":"02a0c9000005","hostname":"Tablet"})"}},
        {applied(TABLET, R"("disconnect":3)"), {}},
        {applied(TABLET, R"("disconnect":4)"),
         {R"(parent.control setdev {"disconnect":4,"disconnecttime":3600,"disconnectsettime":1714550400,"mac":"02a0c9000005","hostname":"Tablet"})"}},
        {applied(TABLET, R"("disconnect":0,"name":"Pad")"),
         {R"(parent.control setdev {"disconnect":0,"disconnecttime":0,"disconnectsettime":0,"mac":"02a0c9000005","hostname":"Pad"})",
          R"(laninfo.sta set {"mac":"02a0c9000005","devname":"Pad"})"}},
        {about(PC, R"("operationType":2,"name":"nobody","blackEnable":1,"disconnect":2)"), {}},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(rig.set(row.element), 0);
        EXPECT_EQ(rig.take_writes(), row.writes) << row.element;
    }
}

TEST_F(Settings, OfADeviceAreThoseOfItsOwnElement) {
    EXPECT_EQ(
        rig.set(about(PC, R"("operationType":2,"name":"wrong","blackEnable":1,"limitSpeed":{"open":1})")), 0);
    EXPECT_EQ(rig.set(about(TABLET, R"("disconnect":2)") + "," + about(TABLET, R"("disconnect":0)")), 0);
    EXPECT_TRUE(name_flag && black_flag && limitSpeed_flag && disconnect_flag);
    EXPECT_FALSE(notice_flag);
    EXPECT_EQ(rig.set(applied(FILTERED, R"("blackEnable":1)") + "," + about(PC, R"("blackEnable":1)")), 0);
    EXPECT_THAT(rig.take_writes(), IsEmpty()) << "no second entry in the filter";
    EXPECT_EQ(
        rig.set(applied(TABLET, R"("onlineNotice":true)") + "," + applied("02a0c9000002", R"("name":"TV")")),
        0);
    EXPECT_THAT(rig.take_writes(), ElementsAre(R"(laninfo.sta set {"mac":"02a0c9000002","devname":"TV"})"));
    EXPECT_FALSE(name_flag);
    EXPECT_TRUE(black_flag);
}

TEST_F(Settings, EndAtALimitWithoutSwitch) {
    EXPECT_EQ(rig.set(applied(PC, R"("name":"first")") + "," +
                      applied(TABLET, R"("name":"second","limitSpeed":{"upSpeed":5})") + "," +
                      applied("02a0c9000002", R"("name":"third")")),
              -1);
    EXPECT_TRUE(has_logged("APP send data fail"));
    EXPECT_THAT(rig.take_writes(),
                ElementsAre(R"(laninfo.sta set {"mac":"02a0c9000001","devname":"first"})"));
    EXPECT_EQ(set_flag, 0);
    EXPECT_EQ(rig.set(applied("02a0c9000003", R"("blackEnable":0)")), 0);
    EXPECT_THAT(rig.take_writes(), IsEmpty());
}

// Nothing of these is written, and each request is answered.
TEST_F(Settings, OddElementsChangeNothing) {
    for (const std::string &element :
         {std::string("5"), std::string("null"), std::string("[]"), std::string("{}"),
          std::string(R"({"name":"x","operationType":1})"), applied("", R"("name":"x")"),
          applied(PC, R"("ParentControlType":99,"parentalTimeControl":[{}])")}) {
        EXPECT_EQ(rig.set(element), 0) << element;
        EXPECT_THAT(rig.take_writes(), IsEmpty()) << element;
    }
    for (const std::string &mac :
         {std::string("02:A0:C9:00:00:01"), std::string("'; reboot")}) { // the daemon refuses them
        const std::string before = rig.router.state();
        EXPECT_EQ(rig.set(applied(mac.c_str(), R"("name":"x","disconnect":2)")), 0);
        EXPECT_EQ(rig.router.state(), before);
    }
    rig.take_writes();
    EXPECT_EQ(rig.set(applied(PC, R"("name":"ä)" + std::string(126, 'x') + R"(ü")")),
              0); // cut before a character
    EXPECT_EQ(rig.router.value("/vrop.laninfo/0/devname"), "\"ä" + std::string(125, 'x') + "\"");
}

TEST_F(Settings, OfThousandsAreAllTaken) {
    std::string elements;
    for (int i = 0; i < 10000; i++)
        elements += R"({"mac":"02a0c9000001","operationType":2},)";
    EXPECT_EQ(rig.set(elements + applied(PC, R"("name":"last")")), 0);
    EXPECT_EQ(rig.router.value("/vrop.laninfo/0/devname"), "\"last\"");
}

TEST_F(Settings, GoOnAfterOneThatFails) {
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "vrop.firewall.*"});
    rig.router.add_fault(
        {.kind = Fault::Kind::Result, .object = "vrop.laninfo.sta", .method = "set", .value = 1});
    const std::string all = R"("blackEnable":1,"disconnect":2,"name":"x","limitSpeed":{"open":0})";
    EXPECT_EQ(rig.set(applied(TABLET, all)), 0);
    EXPECT_TRUE(has_logged("modify name fail"));
    EXPECT_TRUE(has_logged("set limit speed fail"));
    EXPECT_FALSE(has_logged("mac filter is open"));
    EXPECT_EQ(rig.router.value("/vrop.parent.control/device/0/disconnecttime"), "600");
    EXPECT_FALSE(set_flag || black_flag || name_flag || limitSpeed_flag);
}

TEST_F(Settings, ReleaseADeviceWithSeveralFilterEntries) {
    rig.router.set_state(
        "/vrop.firewall.filter/macfilterLists",
        R"([{"index":4,"enable":0,"mac":"02a0c9000001"},{"index":5,"enable":0,"mac":"02a0c9000002"},)"
        R"({"index":7,"enable":1,"mac":"02a0c9000001"}])");
    EXPECT_EQ(get_macFilter_enable(PC), 1);
    EXPECT_EQ(get_macFilter_enable("02a0c9000002"), 0);
    EXPECT_EQ(get_macFilter_enable("02a0c9000003"), -1);
    EXPECT_EQ(rig.set(applied(PC, R"("blackEnable":0)")), 0);
    EXPECT_EQ(rig.router.value("/vrop.firewall.filter/macfilterLists"),
              R"([{"index":5,"enable":0,"mac":"02a0c9000002"}])");
}

TEST_F(Settings, TurnTheOnlineNoticeOfOneEntry) {
    EXPECT_EQ(update_onlineNotice(PC, 0), -1);
    EXPECT_TRUE(has_logged("open file:/aptmp/client_runTime.log fail"));
    std::ofstream(RUNTIMES)
        << R"([{"mac":"02:A0:C9:00:00:01","name":"a","runTime":90000,"timestamp":5,"onlineNotice":1},7,)"
        << R"({"mac":"02a0c9000001","name":"b","runTime":1},)"
        << R"({"mac":"02:A0:C9:00:00:02","name":"c","runTime":2,"timestamp":6,"onlineNotice":1}])";
    EXPECT_EQ(rig.set(applied(PC, R"("onlineNotice":false)") + "," +
                      applied("02a0c9000002", R"("onlineNotice":true)")),
              0);
    EXPECT_EQ(text_of(RUNTIMES),
              R"([{"mac":"02:A0:C9:00:00:01","name":"a","runTime":90000,"timestamp":5,"onlineNotice":0},)"
              R"({"mac":"02a0c9000001","name":"b","runTime":1},)"
              R"({"mac":"02:A0:C9:00:00:02","name":"c","runTime":2,"timestamp":6,"onlineNotice":1}])");
    EXPECT_TRUE(has_logged("rename ok"));
    EXPECT_EQ(get_device_inform(PC), 0);
    EXPECT_EQ(std::filesystem::status(RUNTIMES).permissions(), std::filesystem::perms(0666));
    EXPECT_FALSE(std::filesystem::exists(std::string(RUNTIMES) + ".bak"));
    for (const std::string &file : // no array, and one that has no room for a notice
         {std::string("[{\"mac\":"),
          R"([{"mac":"02A0C9000001","name":")" + std::string(16346, 'x') + "\"}]"}) {
        std::ofstream(RUNTIMES) << file;
        EXPECT_EQ(update_onlineNotice(PC, 1), -1);
        EXPECT_EQ(text_of(RUNTIMES), file);
    }
    EXPECT_TRUE(has_logged("the runtime file has no room"));
}

} // namespace
