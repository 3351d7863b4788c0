// SPDX-License-Identifier: Apache-2.0
#include "https/runtime.h"

#include <filesystem>
#include <fstream>
#include <set>

#include <gmock/gmock.h>

#include "core/json_path.h"
#include "devices/online_notice.h"
#include "https/event_catcher.h"
#include "support/moving_clock.h"
#include "support/router_rig.h"
#include "support/text_file.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char TODAY[] = "/aptmp/client_runTime.log";
constexpr char LAST_DAY[] = "/aptmp/runTime_oneDay.log";
constexpr time_t START = 1714550400; // 2024-05-01 08:00:00 UTC

void write_file(const char *path, const std::string &text) {
    std::ofstream(path) << text;
}

std::string station(const std::string &mac, long uptime, const std::string &name = "tv") {
    return R"({"mac":")" + mac + R"(","ipaddr":"192.0.2.1","devname":")" + name + R"(","uptime":)" +
           std::to_string(uptime) + "}";
}

std::string stations(int count) {
    std::string list;
    for (int i = 0; i < count; i++) {
        char mac[16];
        snprintf(mac, sizeof mac, "02a0c9%06x", i);
        list += (i ? "," : "") + station(mac, 100 + i);
    }
    return "[" + list + "]";
}

// Who is announced: "mac name".
std::vector<std::string> names(const std::vector<std::string> &events) {
    std::vector<std::string> result;
    for (const std::string &text : events) {
        JsonRoot event(json_tokener_parse(text.c_str()));
        result.push_back(std::string(_json_get_str(event.get(), "mac")) + " " +
                         _json_get_str(event.get(), "devName"));
    }
    return result;
}

class Runtime : public testing::Test {
  protected:
    void list(const std::string &json) { rig.router.set_state("/vrop.laninfo", json); }

    RouterRig rig;
    EventCatcher relay{256};
};

TEST_F(Runtime, FirstPollFillsTheFileAndAnnouncesNobody) {
    list("[" + station("02a0c9000001", 60) + "," + station("02a0c9000002", 86401) + "," +
         R"({"mac":"02a0c9000003","hostname":"own","devname":"","uptime":86400},)"
         R"({"mac":"","uptime":5},{"mac":"02a0c9000004"},{"uptime":7},5])");
    EXPECT_EQ(check_staList(), 0);
    EXPECT_THAT(relay.take(), IsEmpty());
    EXPECT_EQ(
        text_of(TODAY),
        R"([{"mac":"02:A0:C9:00:00:01","name":"tv","runTime":60,"timestamp":1714550402,"onlineNotice":1},)"
        R"({"mac":"02:A0:C9:00:00:02","name":"tv","runTime":1,"timestamp":1714550402,"onlineNotice":1},)"
        R"({"mac":"02:A0:C9:00:00:03","name":"own","runTime":86400,"timestamp":1714550402,"onlineNotice":1}])");
    EXPECT_EQ(std::filesystem::status(TODAY).permissions(), std::filesystem::perms(0666));
}

TEST_F(Runtime, ArrivalsAreAnnouncedLastFirst) {
    list("[" + station("02a0c9000001", 60) + "]");
    check_staList();
    moving_clock::clear_pauses();
    list("[" + station("02a0c9000009", 1, "phone \\\"9\\\"") + "," + station("02a0c9000001", 85) + "," +
         station("02a0c9000008", 3, "Anna's / tablet") + "]");
    check_staList();
    EXPECT_THAT(
        relay.take(),
        ElementsAre(R"({"action": "deviceConnect", "mac": "02a0c9000008", "devName": "Anna's / tablet", )"
                    R"("time": 1714550402})",
                    R"({"action": "deviceConnect", "mac": "02a0c9000009", "devName": "phone \"9\"", )"
                    R"("time": 1714550404})"));
    EXPECT_THAT(moving_clock::pauses(), ElementsAre(2000, 2000, 2000));
    check_staList();
    EXPECT_THAT(relay.take(), IsEmpty());
    EXPECT_EQ(online_report(nullptr, "x"), -1);
    EXPECT_EQ(online_report("x", nullptr), -1);
}

TEST_F(Runtime, NoticeOfTheFileDecidesWhoIsAnnounced) {
    list("[" + station("02a0c9000001", 60) + "]");
    check_staList();
    write_file(TODAY, R"([{"mac":"02A0C9000002","onlineNotice":0},{"mac":"02A0C9000003","onlineNotice":1}])");
    list("[" + station("02a0c9000001", 60) + "," + station("02a0c9000002", 1) + "," +
         station("02a0c9000003", 1) + "]");
    check_staList();
    EXPECT_THAT(names(relay.take()), ElementsAre("02a0c9000003 tv"));
}

TEST(OnlineNotice, OfAnyFile) {
    struct Case {
        const char *file, *mac;
        int notice;
    };
    set_default_logs();
    EXPECT_EQ(get_device_inform("02a0c9000001"), 1);
    EXPECT_TRUE(has_logged("open file:/aptmp/client_runTime.log fail"));
    for (const Case &c :
         {Case{R"([{"mac":"AA","onlineNotice":0},{"mac":"BB"}])", "aa", 0},
          Case{R"([{"mac":"aa","onlineNotice":0}])", "aa", 1}, Case{R"([{"mac":"BB"}])", "bb", 1},
          Case{R"([{"mac":"BB","onlineNotice":"0"}])", "BB", 0}, Case{"", "aa", 1}, Case{"{}", "aa", 1},
          Case{"[1,null,\"x\"]", "aa", 1}, Case{R"([{"mac":"AA","onlineNotice":0},{"ma)", "aa", 1},
          Case{"[]", "", -1}, Case{"[]", nullptr, -1}}) {
        write_file(TODAY, c.file);
        EXPECT_EQ(get_device_inform(c.mac), c.notice) << c.file;
    }
}

TEST_F(Runtime, DeparturesCloseTheirEntryLastFirst) {
    list("[" + station("02a0c9000001", 60) + "," + station("02a0c9000002", 60) + "," +
         station("02a0c9000003", 60) + "]");
    check_staList();
    write_file(TODAY,
               R"([{"mac":"02A0C9000002","name":"b","runTime":100,"timestamp":1714550302,"onlineNotice":0},)"
               R"({"mac":"02A0C9000003","name":"c","runTime":90000,"timestamp":1714550302},)"
               R"({"mac":"02a0c9000002","name":"d","runTime":7,"timestamp":1714550302}])");
    list("[" + station("02a0c9000001", 90) + "]");
    moving_clock::clear_pauses();
    EXPECT_EQ(check_staList(), 0); // 3 goes at START + 2, 2 at START + 4
    EXPECT_EQ(text_of(TODAY),
              R"([{"mac":"02A0C9000002","name":"b","runTime":202,"timestamp":1714550302,"onlineNotice":0},)"
              R"({"mac":"02A0C9000003","name":"c","runTime":3700,"timestamp":1714550302},)"
              R"({"mac":"02a0c9000002","name":"d","runTime":7,"timestamp":1714550302}])");
    EXPECT_THAT(moving_clock::pauses(), ElementsAre(2000, 2000));
    EXPECT_EQ(check_staList(), 0);
    EXPECT_EQ(offline_proc(nullptr), -1);
}

TEST_F(Runtime, ListsOfAnySize) {
    struct Case {
        int count;
        size_t in_file;
        bool comparable; // with the next poll's list
    };
    for (const Case &c : {Case{0, 0, true}, Case{1, 1, true}, Case{20, 20, true}, Case{128, 128, false},
                          Case{500, 128, false}}) {
        clear_backupSta();
        list(stations(c.count));
        check_staList();
        JsonRoot file(json_tokener_parse(text_of(TODAY).c_str()));
        ASSERT_TRUE(file);
        EXPECT_EQ(json_object_array_length(file.get()), c.in_file);
        EXPECT_EQ(check_staList(), c.comparable ? 0 : -1);
        EXPECT_EQ(has_logged("get backup obj fail"), !c.comparable);
        EXPECT_THAT(relay.take(), IsEmpty());
    }
}

TEST_F(Runtime, NoListChangesNothing) {
    list("[" + station("02a0c9000001", 60) + "]");
    check_staList();
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
    for (const char *broken : {"", "[{\"mac\":\"AA\"", "{}", "null", "\x01\xff", "5"}) {
        write_file(TODAY, broken);
        write_file(LAST_DAY, broken);
        runtimeList_update("aa");
        runtimeList_finalUpdate(3);
        EXPECT_EQ(text_of(TODAY), broken);
        EXPECT_EQ(text_of(LAST_DAY), broken);
        EXPECT_EQ(runtimeList_report(), nullptr);
    }
    write_file(TODAY, "[1,null,[],{\"mac\":5},{\"runTime\":\"12\",\"timestamp\":1714550400}]");
    runtimeList_finalUpdate(3);
    EXPECT_EQ(text_of(LAST_DAY),
              R"([{"mac":"5","name":"","runTime":1714550400},{"mac":"","name":"","runTime":12}])");
}

TEST(StatusThread, ReportPointsLieInTheEarlyMorning) {
    std::set<long> points;
    for (unsigned seed = 0; seed < 500; seed++)
        points.insert(sta_status_start(seed).report_point);
    EXPECT_GE(*points.begin(), 7200);
    EXPECT_LE(*points.rbegin(), 21599);
    EXPECT_GT(points.size(), 400U);
}

} // namespace
