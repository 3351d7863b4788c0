// SPDX-License-Identifier: Apache-2.0
// When the agent runs its helper programs: settings poll, report after an upgrade, upload of a capture.
#include <fstream>
#include <set>

#include <gmock/gmock.h>

#include "https/capture.h"
#include "https/heads.h"
#include "https/helper_stub.h"
#include "https/time_control.h"
#include "https/upgrade.h"
#include "support/main_log.h"
#include "support/moving_clock.h"

namespace {

using moving_clock::Millis;

std::string lines(const std::string &line, int count) {
    std::string text;
    for (int i = 0; i < count; i++)
        text += line + "\n";
    return text;
}

TEST(TimeControl, RetriesUntilTheSettingsCame) {
    struct Case {
        const char *statuses;
        int attempts;
    };
    set_default_logs();
    HelperStub helper("post_data");
    for (const Case &c : {Case{"0", 1}, Case{"1 0", 2}, Case{"7 1 1 1 1 1 1 1 1 0", 10}, Case{"1", 10}}) {
        helper.answer(c.statuses);
        moving_clock::clear_pauses();
        clear_main_log();
        TimeControlState state = time_control_start(1);
        timeControl_round(&state);
        EXPECT_EQ(helper.take_runs(), lines("1", c.attempts));
        EXPECT_EQ(moving_clock::pauses(), std::vector<Millis>(static_cast<size_t>(c.attempts), 60000));
        EXPECT_TRUE(has_logged("cnt:0 start get web timecontrol"));
        EXPECT_TRUE(has_logged("times:" + std::to_string(c.attempts)));
        EXPECT_EQ(state.count, 1);
    }
}

TEST(TimeControl, FetchesAgainAReportPointAfterTheSeries) {
    set_default_logs();
    HelperStub helper("post_data");
    TimeControlState state = time_control_start(1);
    timeControl_round(&state);
    helper.take_runs();
    for (long i = 1; i < state.report_point; i++)
        timeControl_round(&state);
    EXPECT_EQ(helper.take_runs(), "");
    timeControl_round(&state);
    EXPECT_EQ(helper.take_runs(), "1\n");
}

TEST(TimeControl, ReportPointsLieInTheLastHourOfADay) {
    set_default_logs();
    std::set<long> points;
    for (unsigned seed = 0; seed < 500; seed++)
        points.insert(time_control_start(seed).report_point);
    EXPECT_GE(*points.begin(), 82800);
    EXPECT_LE(*points.rbegin(), 86399);
    EXPECT_GT(points.size(), 200U);
}

TEST(UpgradeResult, ReportsUntilItIsTaken) {
    const std::vector<Millis> pauses = {1000, 5000, 5000, 5000, 5000, 60000, 120000, 180000, 240000, 300000};
    struct Case {
        const char *statuses;
        int runs;
        const char *message;
    };
    set_default_logs();
    HelperStub helper("post_data");
    for (const Case &c : {Case{"0", 1, "upgrade report ok"}, Case{"1 1 0", 3, "upgrade report ok"},
                          Case{"1 1 1 1 1 1 1 1 1 0", 10, "upgrade report ok"},
                          Case{"3", 10, "upgrade report fail ret :3"}}) {
        helper.answer(c.statuses);
        moving_clock::clear_pauses();
        clear_main_log();
        upgrade_report_progress();
        const bool failed = std::string(c.statuses) == "3";
        EXPECT_EQ(helper.take_runs(), lines("3", c.runs));
        EXPECT_EQ(moving_clock::pauses(),
                  std::vector<Millis>(pauses.begin(), pauses.begin() + c.runs - !failed));
        EXPECT_TRUE(has_logged(c.message)) << c.message;
    }
}

TEST(UpgradeResult, StartsOnlyWhenThereIsAnUpgradeToTellOf) {
    set_default_logs();
    HelperStub helper("post_data");
    EXPECT_EQ(upgrade_result_thread(nullptr), 0);
    EXPECT_EQ(upgrade_result_thread("/tmp/none.log"), 0);
    std::ofstream("/tmp/other.log") << "[t][f][1]something else\n";
    EXPECT_EQ(upgrade_result_thread("/tmp/other.log"), HEAD_SIGN_FAILED);
    EXPECT_TRUE(has_logged("no need report upgrade progress"));
    EXPECT_EQ(helper.take_runs(), "");
    std::ofstream("/tmp/upgrade.log") << "[t][f][1]buf:{\"newversion\": \"V2\", \"strategy\": \"1\"}\n";
    EXPECT_EQ(upgrade_result_thread("/tmp/upgrade.log"), 0);
    EXPECT_TRUE(wait_for_log("pthread_exit"));
    EXPECT_EQ(helper.take_runs(), "3\n");
}

TEST(Capture, UploadsOnceTheCountdownIsOverWhileTheFileIsThere) {
    set_default_logs();
    HelperStub helper("common_put_file");
    EXPECT_EQ(set_cap_config(2, "/tmp/cap.pcap", "https://host/cap"), 0);
    capture_round();
    capture_round(); // no file: the countdown stands
    std::ofstream("/tmp/cap.pcap") << "packets";
    capture_round();
    capture_round();
    EXPECT_EQ(helper.take_runs(), "");
    capture_round();
    EXPECT_EQ(helper.take_runs(), "/tmp/cap.pcap\n");
    set_cap_config(0, "/tmp/cap.pcap", "");
    capture_round();
    EXPECT_EQ(helper.take_runs(), "");
}

TEST(Capture, SettingsAreCutAndThePathIsOneWord) {
    set_default_logs();
    char address[300];
    for (const char *path : {"/tmp/a b", "/tmp/a;reboot", "/tmp/$(reboot)", "/tmp/a\nb", "`x`"})
        EXPECT_EQ(set_cap_config(0, path, "https://host/"), -1) << path;
    EXPECT_EQ(get_cap_realurl(address, sizeof address), 0);
    EXPECT_STREQ(address, "");
    EXPECT_EQ(set_cap_config(0, nullptr, std::string(300, 'u').c_str()), 0);
    EXPECT_EQ(get_cap_realurl(address, sizeof address), 0);
    EXPECT_EQ(address, std::string(255, 'u'));
    EXPECT_EQ(get_cap_realurl(address, 4), 0);
    EXPECT_STREQ(address, "uuu");
    EXPECT_EQ(get_cap_realurl(nullptr, 4), -1);
    EXPECT_EQ(get_cap_realurl(address, 0), -1);
}

} // namespace
