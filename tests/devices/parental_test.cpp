// SPDX-License-Identifier: Apache-2.0
// Parental control: the work that a request starts, and what becomes of it.
#include "tests/devices/settings_rig.h"

#include <chrono>
#include <latch>
#include <semaphore>

#include "core/report_gate.h"
#include "devices/parental_writes.h"
#include "devices/work_lane.h"
#include "tests/devices/lists.h"

namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class Parental : public testing::Test {
  protected:
    // A set's last pause comes behind its last write, which the tests have seen.
    ~Parental() override { std::lock_guard pushing(parentcontrol_mutex); }
    // Waits until the rule sets are pushed; what has been written since the last time.
    std::vector<std::string> pushed(const std::string &last_write) {
        EXPECT_TRUE(rig.wait_for_write(last_write)) << last_write;
        return rig.take_writes();
    }
    SettingsRig rig;
};

constexpr char POLICY_BLACK[] = R"(parent.urlcontrol.modify set {"filterType":"black","mac":"02a0c9000005"})";

TEST_F(Parental, RequestsReplaceAddressesAndTimes) {
    EXPECT_EQ(rig.set(about(
                  TABLET, R"("operationType":3,"webControlEnable":0,"parentalWebControl":{"controlPolicy":1,)"
                          R"("urls":[{"url":"a.example","open":true},{"url":"$(b) %s'\"","open":false}],)"
                          R"("sites":["c.example","a.example"]},)"
                          R"("parentalTimeControl":[{"timeFrame":"08:30-21:05","daysOfWeek":[1,0,1,0,0,0,1],)"
                          R"("open":1},{"timeFrame":"0830","open":1}])")),
              0);
    EXPECT_TRUE(wait_for_log("cut timeFrame:0830 fail"));
    EXPECT_THAT(
        rig.take_writes(),
        ElementsAre(
            R"(parent.urlcontrol delete {"index":-2222,"mac":"02a0c9000005"})",
            R"(parent.timecontrol delete {"index":-1111,"mac":"02a0c9000005"})",
            R"(parent.control setdev {"mac":"02a0c9000005","hostname":"Tablet","devurlenable":0})",
            R"(parent.urlcontrol add {"filterType":"white","mac":"02a0c9000005","enable":1,"url":"c.example"})",
            R"(parent.urlcontrol.modify set {"filterType":"white","mac":"02a0c9000005"})",
            R"(parent.urlcontrol add {"filterType":"white","mac":"02a0c9000005","enable":1,"url":"a.example"})",
            R"(parent.urlcontrol add {"filterType":"white","mac":"02a0c9000005","enable":0,"url":"$(b) %s'\""})",
            R"(parent.urlcontrol.modify set {"filterType":"white","mac":"02a0c9000005"})",
            R"(parent.timecontrol add {"enable":1,"timestart":"0830","timeend":"2105","mac":"02a0c9000005","week":"013"})"));
    EXPECT_THAT(moving_clock::pauses(), Contains(10000));
    EXPECT_FALSE(parentControl_flag);
}

// Each rule's switch, by the request's switches.
TEST_F(Parental, SwitchesOfARequestCloseItsRules) {
    struct Row {
        const char *switches;
        int url_enable, time_enable;
    };
    for (const auto &[switches, url_enable, time_enable] :
         {Row{R"("webControlEnable":0,"timeControlEnable":0,)", 1, 1},
          {R"("parentalEnable":1,"webControlEnable":1,)", 0, 0},
          {R"("parentalEnable":0,"webControlEnable":0,)", 0, 1},
          {R"("parentalEnable":0,"timeControlEnable":0,)", 1, 0},
          {R"("parentalEnable":0,)", 1, 1}}) {
        rig.set(about(TABLET, std::string(switches) +
                                  R"("operationType":3,"parentalWebControl":{"controlPolicy":0,)"
                                  R"("urls":[{"url":"u","open":1}]},)"
                                  R"("parentalTimeControl":[{"timeFrame":"1:2-3:4","open":1}])"));
        const std::vector<std::string> writes = pushed("parent.timecontrol add");
        const std::string url_rule = R"("enable":)" + std::to_string(url_enable) + R"(,"url":"u"})";
        EXPECT_THAT(writes, Contains(testing::EndsWith(url_rule))) << switches;
        EXPECT_EQ(writes.back(),
                  R"(parent.timecontrol add {"enable":)" + std::to_string(time_enable) +
                      R"(,"timestart":"0102","timeend":"0304","mac":"02a0c9000005","week":""})");
    }
}

TEST_F(Parental, OddTimesAreRefusedAndOddTextsArriveAsTheyAre) {
    const std::string hundred = listed(100, [](size_t) { return "1"; });
    struct Row {
        std::string rule, sent; // nothing is sent of a rule that is refused
    };
    const Row rows[] = {
        {R"("timeFrame":"1:2-3:4","daysOfWeek":[])", R"("0102","timeend":"0304",..."week":"")"},
        {R"("timeFrame":"1:2-3:4","daysOfWeek":[)" + hundred + "]",
         R"("0102","timeend":"0304",..."week":"0123456")"},
        {R"("timeFrame":"23:00-1:00","daysOfWeek":["1",null,-1,{},"x",0.2])",
         R"("2300","timeend":"0100",..."week":"13")"},
        {R"("timeFrame":"1:2-3:4-5:6")", R"("0102","timeend":"0304",..."week":"")"},
        {R"("timeFrame":"ab-cd","daysOfWeek":{})", ""},
        {R"("timeFrame":"-")", ""},
        {R"("timeFrame":"24:00-12:59")", R"("2400","timeend":"1259",..."week":"")"},
        {R"("timeFrame":"24:01-1:00")", ""},
        {R"("timeFrame":"12:60-1:00")", ""},
        {R"("timeFrame":"1:00--1:30")", ""},
        {R"("timeFrame":")" + std::string(10240, '9') + R"(")", ""},
        {R"("timeFrame":"1:00")", ""}};
    std::string rules;
    std::vector<std::string> expected = {R"(parent.timecontrol delete {"index":-1111,"mac":"02a0c9000005"})"};
    for (const auto &[rule, sent] : rows) {
        rules += "{" + rule + "},";
        if (sent.empty()) continue;
        expected.push_back(R"(parent.timecontrol add {"enable":1,"timestart":)" + sent + "}");
        expected.back().replace(expected.back().find("..."), 3, R"("mac":"02a0c9000005",)");
    }
    rig.set(
        about(TABLET, R"("operationType":3,"parentalTimeControl":[)" + rules + R"({"timeFrame":"end"}])"));
    EXPECT_TRUE(wait_for_log("cut timeFrame:end fail"));
    EXPECT_EQ(rig.take_writes(), expected);

    const std::string odd = R"(`$(x)';|&<>*?~!#%s%n%d\\ \"ä\u0001{}[])";
    rig.set(about(TABLET, R"("operationType":3,"parentalWebControl":{"controlPolicy":0,"urls":[{"url":")" +
                              odd + R"("},{"url":")" + std::string(255, 'u') + R"("},{"url":")" +
                              std::string(256, 'u') + R"("}]})"));
    const std::vector<std::string> writes = pushed(POLICY_BLACK);
    EXPECT_THAT(writes, SizeIs(4)); // what is deleted, two rules and the policy
    EXPECT_THAT(writes, Contains(testing::EndsWith(R"("enable":1,"url":")" + odd + R"("})")));
}

TEST_F(Parental, PolicyIsBlackOrWhite) {
    EXPECT_EQ(rig.set(about(TABLET, R"("operationType":3,"ParentControlType":8,"parentalTimeControl":[],)"
                                    R"("parentalWebControl":{"controlPolicy":2,"urls":[{"url":"u"}]})")),
              0);
    EXPECT_TRUE(wait_for_log("set parental Web Control filter type fail"));
    EXPECT_THAT(rig.take_writes(), ElementsAre(StartsWith("parent.urlcontrol delete")));
    EXPECT_TRUE(has_logged("i:0 add parental Web Control fail"));
    EXPECT_EQ(rig.set(about(TABLET, R"("operationType":3,"ParentControlType":7,"parentalTimeControl":[],)"
                                    R"("parentalWebControl":{"controlPolicy":0})")),
              0);
    EXPECT_THAT(rig.take_writes(), ElementsAre(StartsWith("parent.timecontrol delete")));
    EXPECT_TRUE(has_logged("no need set parent url control"));
}

TEST_F(Parental, ApplicationsKeepTheUrlThatTheDaemonHas) {
    EXPECT_EQ(
        rig.set(about(
            TABLET,
            R"("operationType":1,"ParentControlType":1,"ParentalGameControl":{"urls":[)"
            R"({"appname":"Blocks","open":false},{"appname":"Blocks","url":"play.example.net","open":1},)"
            R"({"appname":"New","url":"new.example"},{"appname":"Chatter","open":1},7,{"open":1}]})")),
        0);
    EXPECT_THAT(
        pushed(POLICY_BLACK),
        ElementsAre(
            R"(parent.control setenable {"enable":1})",
            R"(parent.urlcontrol.modify set {"filterType":"black","mac":"02a0c9000005","enable":0,"url":"play.example.net","index":1})",
            R"(parent.urlcontrol.modify set {"filterType":"black","mac":"02a0c9000005","enable":1,"url":"play.example.net","index":1})",
            R"(parent.urlcontrol add {"filterType":"black","mac":"02a0c9000005","enable":1,"url":"new.example","appname":"New","apptype":1})",
            POLICY_BLACK));
    EXPECT_TRUE(has_logged("appname:Chatter apptype:1 has no url")); // that is of another type
    EXPECT_TRUE(wait_for_log("pthread_exit"));
    EXPECT_FALSE(parent_app_flag);
    rig.set(applied(TABLET, R"("ParentControlType":2,"ParentalSocialControl":{"urls":[]})"));
    EXPECT_THAT(rig.take_writes(), ElementsAre(R"(parent.control setenable {"enable":1})"));
}

TEST_F(Parental, TwoRequestsWithinThePauseAreBothCarriedOut) {
    std::binary_semaphore go(0);
    moving_clock::on_pause([&](moving_clock::Millis millis) {
        if (millis == 2000) go.acquire();
    });
    rig.set(about(PC, R"("operationType":1,"parentFlag":1)") + "," +
            about(TABLET, R"("operationType":2,"parentFlag":0)"));
    rig.set(about(PC, R"("operationType":1,"parentFlag":0)")); // while the first still waits
    rig.set(about("02a0c9000002", R"("operationType":1,"parentFlag":1)") + "," +
            about(PC, R"("parentFlag":0)"));
    EXPECT_THAT(rig.take_writes(), IsEmpty());
    moving_clock::on_pause({});
    go.release();
    EXPECT_TRUE(rig.router.wait_for_state("/vrop.parent.control/device/0/mac", "\"02a0c9000002\""));
    EXPECT_THAT(rig.take_writes(),
                ElementsAre(R"(parent.control setenable {"enable":1})",
                            R"(parent.control add {"mac":"02a0c9000001","hostname":"Desk PC"})",
                            R"(parent.control delete {"delall":0,"mac":"02a0c9000005"})",
                            R"(parent.control delete {"delall":0,"mac":"02a0c9000001"})",
                            R"(parent.control setenable {"enable":1})",
                            R"(parent.control add {"mac":"02a0c9000002","hostname":"TV"})"));
    EXPECT_EQ(parentcontrol_level, LEVEL_NONE);
}

TEST_F(Parental, ARemovalThatWaitsDoesNotUndoWhatComesAfter) {
    moving_clock::on_pause([](moving_clock::Millis millis) {
        if (millis == 2000) wait_for_log("operationType:3 parentControl_flag:0 parentFlag:-1");
    });
    rig.set(about(TABLET, R"("operationType":1,"parentFlag":0)"));
    rig.set(about(TABLET, R"("operationType":3,"timeControlEnable":1)"));
    EXPECT_EQ(waiting_parental_level(TABLET), LEVEL_NONE);
    EXPECT_EQ(rig.router.value("/vrop.parent.control/device/0/devtimeenable"), "1");
    EXPECT_EQ(rig.router.value("/vrop.parent.control/device/1"), "");
}

TEST_F(Parental, RulesOfAListAreBounded) {
    const std::string rules =
        listed(10000, [](size_t i) { return R"({"url":"u)" + std::to_string(i) + R"("})"; });
    rig.set(about(TABLET,
                  R"("operationType":3,"parentalWebControl":{"controlPolicy":0,"urls":[)" + rules + "]}"));
    EXPECT_THAT(pushed(POLICY_BLACK), SizeIs(MOST_RULES + 2));
    EXPECT_TRUE(has_logged("mac:02a0c9000005 10000 rules, the first 64 are taken"));
}

TEST_F(Parental, WorkThatWaitsIsBounded) {
    std::binary_semaphore go(0);
    moving_clock::on_pause([&](moving_clock::Millis) { go.acquire(); });
    const WebControl one = {TABLET, BLACK, {{"u", 1}}};
    for (size_t i = 0; i < MOST_WAITING; i++)
        EXPECT_EQ(newWebControl_threadStart(one), 0);
    EXPECT_EQ(webControl_threadStart(one), -1);
    EXPECT_TRUE(has_logged("128 pieces of parental control work wait, mac:02a0c9000005 is refused"));
    moving_clock::on_pause({});
    go.release();
    while (webControl_threadStart(one) != 0)
        std::this_thread::yield();
    EXPECT_TRUE(rig.router.wait_for_calls(2 * (MOST_WAITING + 1), "vrop.parent.urlcontrol*"));
}

// Lost between two rules of a set and between two elements of the request that brings them.
TEST_F(Parental, GoesOnWhenTheBusIsLost) {
    std::latch lost(1);
    moving_clock::on_pause([&](moving_clock::Millis millis) {
        if (millis == 1000) lost.wait();
        if (millis != 10000) return;
        EXPECT_TRUE(rig.wait_for_write("parent.urlcontrol add"));
        rig.router.stop();
        lost.count_down();
        lower_set_flag(); // as a service may that ends meanwhile
        EXPECT_EQ(set_flag, 1);
        moving_clock::on_pause({});
    });
    const std::string rules = R"("parentalWebControl":{"controlPolicy":0,"urls":[{"url":"a"},{"url":"b"}]})";
    EXPECT_EQ(rig.set(about(TABLET, R"("operationType":3,)" + rules) + "," +
                      about(PC, R"("operationType":3,"parentalEnable":0,"parentalTimeControl":[])") + "," +
                      applied(PC, R"("name":"x","parentFlag":0,)" + rules)),
              0);
    EXPECT_TRUE(wait_for_log("set parental Web Control filter type fail"));
    for (const char *text :
         {"i:1 add parental Web Control fail", "control url:b fail", "control filterType:0 fail",
          "delete parenttimecontrol mac:02a0c9000001 fail", "set parentalEnable fail",
          "add parent Control fail", "modify name fail", "delete parenturlcontrol mac:02a0c9000001 fail"})
        EXPECT_TRUE(has_logged(text)) << text;
    EXPECT_FALSE(has_logged("i:0 add parental Web Control fail"));
    EXPECT_EQ(set_flag, 0);
    rig.router.start();
    raise_set_flag();
    EXPECT_EQ(rig.set(applied(PC, R"("name":"again")")), 0);
    EXPECT_EQ(rig.router.value("/vrop.laninfo/0/devname"), "\"again\"");
    EXPECT_EQ(set_flag, 1) << "the service is still at work";
    lower_set_flag();
    EXPECT_EQ(set_flag, 0);
}

TEST_F(Parental, RequestsWaitForSomeDevicesAndWriteAll) {
    EXPECT_EQ(rig.set(listed(MOST_PARENTAL_WAITS + 8,
                             [](size_t i) {
                                 return about(TABLET, R"("operationType":3,"timeControlEnable":)" +
                                                          std::to_string(i % 2));
                             })),
              0);
    EXPECT_THAT(moving_clock::pauses(), testing::AllOf(SizeIs(MOST_PARENTAL_WAITS), Each(10000)));
    EXPECT_THAT(rig.take_writes(), SizeIs(testing::Ge(static_cast<size_t>(MOST_PARENTAL_WAITS + 7))));
    EXPECT_TRUE(has_logged("mac:02a0c9000005 32 devices have been waited for, no wait"));
}

} // namespace
