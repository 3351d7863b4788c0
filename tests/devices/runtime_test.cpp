// SPDX-License-Identifier: Apache-2.0
#include "devices/runtime.h"

#include <filesystem>
#include <fstream>
#include <set>

#include <gmock/gmock.h>

#include "core/clock.h"
#include "core/handles.h"
#include "core/text.h"
#include "devices/online_notice.h"
#include "devices/runtime_list.h"
#include "devices/station_list.h"
#include "support/event_catcher.h"
#include "support/helper_stub.h"
#include "support/moving_clock.h"
#include "support/router_rig.h"
#include "support/text_file.h"
#include "tests/devices/lists.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char TODAY[] = "/aptmp/client_runTime.log";
constexpr char LAST_DAY[] = "/aptmp/runTime_oneDay.log";

// One client in the router's list.
std::string tv(size_t number, int uptime, const std::string &name = "tv") {
    return format_text<256>(R"({"mac":"02a0c9%06zx","devname":"%s","uptime":%d})", number, name.c_str(),
                            uptime)
        .text;
}

// A name of control characters, as JSON writes them.
std::string controls(int count) {
    return count == 0 ? "" : "\\u0001" + controls(count - 1);
}

class Runtime : public testing::Test {
  protected:
    int poll(const std::string &stations) {
        rig.router.set_state("/vrop.laninfo", "[" + stations + "]");
        moving_clock::clear_pauses();
        return check_staList();
    }

    RouterRig rig;
    EventCatcher relay{256};
};

TEST_F(Runtime, FirstPollFillsTheFileAndAnnouncesNobody) {
    EXPECT_EQ(poll(tv(1, 60) + "," + tv(2, 86401) +
                   R"(,{"mac":"02a0c9000003","hostname":"own","devname":"","uptime":86400},)"
                   R"({"mac":"","uptime":5},{"mac":"02a0c9000004"},{"uptime":7},5)"),
              0);
    EXPECT_THAT(relay.take(), IsEmpty());
    EXPECT_EQ(
        text_of(TODAY),
        R"([{"mac":"02:A0:C9:00:00:01","name":"tv","runTime":60,"timestamp":1714550402,"onlineNotice":1},)"
        R"({"mac":"02:A0:C9:00:00:02","name":"tv","runTime":1,"timestamp":1714550402,"onlineNotice":1},)"
        R"({"mac":"02:A0:C9:00:00:03","name":"own","runTime":86400,"timestamp":1714550402,"onlineNotice":1}])");
    EXPECT_EQ(std::filesystem::status(TODAY).permissions(), std::filesystem::perms(0666));
}

TEST_F(Runtime, ArrivalsAreAnnouncedLastFirstUnlessTheFileSaysOtherwise) {
    poll(tv(1, 60));
    std::ofstream(TODAY)
        << R"([{"mac":"02:A0:C9:00:00:07","onlineNotice":0},{"mac":"02:A0:C9:00:00:08","onlineNotice":1}])";
    const std::string stations = tv(7, 1) + R"(,{"mac":"02a0c9000009","devname":"phone \"9\"","uptime":1},)" +
                                 R"({"mac":"02a0c9000006","devname":")" + controls(127) +
                                 R"(","uptime":1},)" + tv(1, 85) +
                                 R"(,{"mac":"02a0c9000008","devname":"Anna's / tablet","uptime":3})";
    poll(stations);
    EXPECT_THAT(
        relay.take(),
        ElementsAre(R"({"action": "deviceConnect", "mac": "02a0c9000008", "devName": "Anna's / tablet", )"
                    R"("time": 1714550402})",
                    R"({"action": "deviceConnect", "mac": "02a0c9000006", "devName": ")" + controls(24) +
                        R"(", "time": 1714550404})",
                    R"({"action": "deviceConnect", "mac": "02a0c9000009", "devName": "phone \"9\"", )"
                    R"("time": 1714550406})"));
    EXPECT_THAT(moving_clock::pauses(), ElementsAre(2000, 2000, 2000, 2000, 2000));
    poll(stations);
    EXPECT_THAT(relay.take(), IsEmpty());
}

TEST_F(Runtime, NoticeIsThatOfTheEntryWithThatMac) {
    EXPECT_EQ(get_device_inform("aa"), 1);
    EXPECT_TRUE(has_logged("open file:/aptmp/client_runTime.log fail"));
    std::ofstream(TODAY)
        << R"([1,null,"x",{"mac":"AA","onlineNotice":0},{"mac":"AA"},{"mac":"BB"},)"
           R"({"mac":"cc","onlineNotice":0},{"mac":"D:D","onlineNotice":"0"},{"mac":":","onlineNotice":0}])";
    for (const auto &[mac, notice] :
         {std::pair{"aa", 0}, {"bb", 1}, {"cc", 1}, {"DD", 0}, {"d:d", 0}, {"ee", 1}, {":", 1}, {"", -1}})
        EXPECT_EQ(get_device_inform(mac), notice) << mac;
}

TEST_F(Runtime, DeparturesCloseTheirEntryLastFirst) {
    poll(tv(1, 60) + "," + tv(2, 60) + "," + tv(3, 60));
    std::ofstream(TODAY)
        << R"([{"mac":"02:A0:C9:00:00:02","name":"b","runTime":100,"timestamp":1714550302,"onlineNotice":0},)"
           R"({"mac":"02:A0:C9:00:00:03","name":"c","runTime":90000,"timestamp":1714550302},)"
           R"({"mac":"02:a0:c9:00:00:02","name":"d","runTime":7,"timestamp":1714550302}])";
    EXPECT_EQ(poll(tv(1, 90)), 0); // 3 goes two seconds after the start, 2 two seconds later
    EXPECT_EQ(
        text_of(TODAY),
        R"([{"mac":"02:A0:C9:00:00:02","name":"b","runTime":202,"timestamp":1714550302,"onlineNotice":0},)"
        R"({"mac":"02:A0:C9:00:00:03","name":"c","runTime":3700,"timestamp":1714550302},)"
        R"({"mac":"02:a0:c9:00:00:02","name":"d","runTime":7,"timestamp":1714550302}])");
    EXPECT_THAT(moving_clock::pauses(), ElementsAre(2000, 2000));
    EXPECT_EQ(poll(tv(1, 115)), 0);
    EXPECT_THAT(moving_clock::pauses(), IsEmpty());
}

TEST_F(Runtime, ListsOfAnySize) {
    for (unsigned count : {0, 1, 20, 128, 500}) {
        clear_backupSta();
        const std::string stations = listed(count, [](size_t i) { return tv(i, 100); });
        poll(stations);
        JsonRoot file(json_tokener_parse(text_of(TODAY).c_str()));
        ASSERT_TRUE(file);
        EXPECT_EQ(json_object_array_length(file.get()), std::min(count, 128U));
        const bool comparable = count <= 20; // with the next poll's list
        EXPECT_EQ(poll(stations), comparable ? 0 : -1);
        EXPECT_EQ(has_logged("get backup obj fail"), !comparable);
        EXPECT_THAT(relay.take(), IsEmpty());
    }
    clear_backupSta();
    poll(listed(128, [](size_t i) { return tv(i, 100, std::string(127, 'n')); }));
    JsonRoot file(json_tokener_parse(text_of(TODAY).c_str())); // without those that have no room
    EXPECT_EQ(json_object_get_type(file.get()), json_type_array);
    EXPECT_GT(text_of(TODAY).size(), 16000U);
}

TEST_F(Runtime, NoListChangesNothing) {
    poll(tv(1, 60));
    const std::string before = text_of(TODAY);
    for (const char *reply :
         {"{}", "{\"vrop.laninfo\":{}}", "{\"vrop.laninfo\":null}", "{\"vrop.laninfo\":\"x\"}"}) {
        rig.router.add_fault(
            {.kind = router::Fault::Kind::Reply, .object = "vrop.laninfo", .reply = reply, .count = 1});
        EXPECT_EQ(check_staList(), 0);
    }
    EXPECT_TRUE(has_logged("get laninfo list fail"));
    EXPECT_EQ(text_of(TODAY), before);
    EXPECT_THAT(relay.take(), IsEmpty());
}

TEST_F(Runtime, BrokenFilesAreLeftAlone) {
    for (const char *broken : {"", R"([{"mac":"AA","onlineNotice":0},{"ma)", "{}", "null", "\x01\xff", "5"}) {
        std::ofstream(TODAY) << broken;
        std::ofstream(LAST_DAY) << broken;
        runtimeList_update("aa");
        runtimeList_finalUpdate(3);
        EXPECT_EQ(text_of(TODAY), broken);
        EXPECT_EQ(text_of(LAST_DAY), broken);
        EXPECT_EQ(runtimeList_report(), nullptr);
        EXPECT_EQ(get_device_inform("aa"), 1);
    }
    std::ofstream(TODAY) << R"([1,null,[],{"mac":5},{"runTime":"12","timestamp":1714550400},)"
                         << R"({"runTime":9223372036854775807,"timestamp":-9223372036854775808}])";
    runtimeList_finalUpdate(3);
    EXPECT_EQ(text_of(LAST_DAY), R"([{"mac":"5","name":"","runTime":0},{"mac":"","name":"","runTime":12},)"
                                 R"({"mac":"","name":"","runTime":2305843010928244352}])");
}

TEST_F(Runtime, AClockThatIsSetTakesNothingFromTheDay) {
    poll(tv(1, 60)); // whose entry is taken two seconds later
    for (const time_t clock : {100, 1714550400, 1714460000}) {
        moving_clock::set(clock);
        StaStatusState state = {.report_point = 90000, .done = true, .round = 1};
        check_staStatus_round(&state);
    }
    std::ofstream(LAST_DAY) << "";
    moving_clock::set(now_seconds() + 3); // a correction, not another clock
    runtimeList_finalUpdate(0);
    EXPECT_EQ(text_of(LAST_DAY), R"([{"mac":"02:A0:C9:00:00:01","name":"tv","runTime":63}])");
    moving_clock::set(now_seconds() - 3);
    std::ofstream(TODAY)
        << R"([5,{"mac":"02:A0:C9:00:00:01","runTime":7,"onlineNotice":0},{"timestamp":1714460000}])";
    moving_clock::set(1714550400);
    runtimeList_update("02a0c9000001");
    EXPECT_EQ(text_of(TODAY),
              R"([{"mac":"02:A0:C9:00:00:01","name":"","runTime":7,"timestamp":1714550400,"onlineNotice":0},)"
              R"({"mac":"","name":"","runTime":0,"timestamp":1714550400}])");
}

// What each second of the day brings, with the night's work done (bare) or still to do.
TEST_F(Runtime, EachSecondOfTheNightBringsItsTask) {
    setenv("TZ", "UTC", 1);
    HelperStub helper("post_data");
    struct Row {
        long second;
        bool done;
        const char *reports; // runs of the helper
        bool closes, done_then;
    };
    const Row rows[] = {
        {9000, false, "", false, false}, {9001, false, "0\n", false, true}, {9004, false, "0\n", false, true},
        {9005, false, "", false, false}, {9004, true, "", false, true},     {7199, true, "", false, false},
        {7200, true, "", false, true},   {21600, true, "", false, true},    {21601, true, "", false, false},
        {86394, true, "", false, false}, {86395, true, "", false, true},    {86395, false, "", false, false},
        {86396, false, "", true, true},  {86399, false, "", true, true},    {86399, true, "", false, true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.second);
        std::ofstream(TODAY) << "[]";
        std::filesystem::remove(LAST_DAY);
        moving_clock::clear_pauses();
        clear_main_log();
        moving_clock::set(1714521600 + row.second); // 2024-05-01 00:00:00 UTC
        StaStatusState state = {.report_point = 9000, .done = row.done, .round = 1};
        check_staStatus_round(&state);
        EXPECT_EQ(helper.take_runs(), row.reports);
        EXPECT_EQ(state.done, row.done_then);
        EXPECT_EQ(text_of(LAST_DAY), row.closes ? "[]" : "");
        EXPECT_EQ(text_of(TODAY), row.closes ? "" : "[]");
        EXPECT_EQ(has_logged("start clear backup buffer"), row.closes);
        EXPECT_EQ(moving_clock::pauses().size(), row.closes ? 1U : 0U);
    }
    StaStatusState state = {.report_point = 90000, .done = true};
    for (const auto &[rounds, lists] :
         {std::pair{1, 2U}, {24, 2U}, {1, 3U}}) { // the first one fills the file too
        for (int round = 0; round < rounds; round++)
            check_staStatus_round(&state);
        EXPECT_EQ(rig.router.calls("vrop.laninfo", "list").size(), lists);
    }
}

TEST(RuntimePoints, ReportPointsAreSpreadOverTheirRange) {
    std::set<long> points;
    for (unsigned seed = 0; seed < 500; seed++)
        points.insert(sta_status_start(seed).report_point);
    EXPECT_TRUE(*points.begin() >= 7200 && *points.rbegin() <= 21599 && points.size() > 400);
}

} // namespace
