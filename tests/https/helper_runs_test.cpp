// SPDX-License-Identifier: Apache-2.0
// When the agent runs its helper programs: settings poll, report after an upgrade, upload of a capture; and
// the moments of the day that are drawn for them.
#include <set>

#include <gmock/gmock.h>

#include "https/capture.h"
#include "https/heads.h"
#include "https/helper_stub.h"
#include "https/runtime.h"
#include "https/time_control.h"
#include "https/upgrade.h"
#include "support/main_log.h"
#include "support/moving_clock.h"

namespace {

using testing::Contains;

struct HelperRuns : testing::Test {
    HelperRuns() { set_default_logs(); }

    // What `act` runs, waits for and says when the helper exits so.
    void expect(void (*act)(), const std::string &statuses, const std::string &mode, size_t runs,
                std::vector<moving_clock::Millis> pauses, size_t pause_count, const std::string &message) {
        SCOPED_TRACE(mode + ": " + statuses);
        helper.answer(statuses);
        moving_clock::clear_pauses();
        clear_main_log();
        act();
        std::string lines;
        for (size_t i = 0; i < runs; i++)
            lines += mode + "\n";
        EXPECT_EQ(helper.take_runs(), lines);
        pauses.resize(pause_count);
        EXPECT_EQ(moving_clock::pauses(), pauses);
        EXPECT_THAT(log_messages(), Contains(message));
    }

    HelperStub helper{"post_data"};
};

TEST_F(HelperRuns, SettingsAreFetchedUntilTheyCame) {
    auto round = [] {
        TimeControlState state = time_control_start(1);
        timeControl_round(&state);
        EXPECT_TRUE(has_logged("cnt:0 start get web timecontrol"));
        EXPECT_EQ(state.count, 1);
    };
    const std::vector<moving_clock::Millis> pauses(10, 60000);
    expect(round, "0", "1", 1, pauses, 1, "times:1");
    expect(round, "1 0", "1", 2, pauses, 2, "times:2");
    expect(round, "7 1 1 1 1 1 1 1 1 0", "1", 10, pauses, 10, "times:10");
    expect(round, "1", "1", 10, pauses, 10, "times:10");
}

TEST_F(HelperRuns, SettingsAreFetchedAgainAReportPointAfterTheSeries) {
    TimeControlState state = time_control_start(1);
    timeControl_round(&state);
    helper.take_runs();
    while (state.count < state.report_point)
        timeControl_round(&state);
    EXPECT_EQ(helper.take_runs(), "");
    timeControl_round(&state);
    EXPECT_EQ(helper.take_runs(), "1\n");
}

TEST_F(HelperRuns, PointsOfTheDayAreSpreadOverTheirRange) {
    std::set<long> settings, runtimes;
    for (unsigned seed = 0; seed < 500; seed++) {
        settings.insert(time_control_start(seed).report_point);
        runtimes.insert(sta_status_start(seed).report_point);
    }
    EXPECT_TRUE(*settings.begin() >= 82800 && *settings.rbegin() <= 86399 && settings.size() > 200);
    EXPECT_TRUE(*runtimes.begin() >= 7200 && *runtimes.rbegin() <= 21599 && runtimes.size() > 400);
}

TEST_F(HelperRuns, UpgradeIsReportedUntilTheReportIsTaken) {
    const std::vector<moving_clock::Millis> pauses = {1000,  5000,   5000,   5000,   5000,
                                                      60000, 120000, 180000, 240000, 300000};
    expect(upgrade_report_progress, "0", "3", 1, pauses, 0, "upgrade report ok");
    expect(upgrade_report_progress, "1 1 0", "3", 3, pauses, 2, "upgrade report ok");
    expect(upgrade_report_progress, "1 1 1 1 1 1 1 1 1 0", "3", 10, pauses, 9, "upgrade report ok");
    expect(upgrade_report_progress, "3", "3", 10, pauses, 10, "upgrade report fail ret :3");
}

TEST_F(HelperRuns, UpgradeIsReportedOnlyWhenThereWasOne) {
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

TEST(Capture, IsUploadedOnceTheCountdownIsOverWhileTheFileIsThere) {
    HelperStub helper("common_put_file");
    auto runs_of_round = [&] {
        capture_round();
        return helper.take_runs();
    };
    EXPECT_EQ(set_cap_config(2, "/tmp/cap.pcap", "https://host/cap"), 0);
    for (int round = 0; round < 3; round++)
        EXPECT_EQ(runs_of_round(), ""); // no file: the countdown stands
    std::ofstream("/tmp/cap.pcap") << "packets";
    EXPECT_EQ(runs_of_round() + runs_of_round(), "");
    EXPECT_EQ(runs_of_round(), "/tmp/cap.pcap\n");
    set_cap_config(0, "/tmp/cap.pcap", "");
    EXPECT_EQ(runs_of_round(), "");
}

TEST(Capture, SettingsAreCutAndThePathIsOneWord) {
    char address[300] = "before";
    for (const char *path : {"/tmp/a b", "/tmp/a;reboot", "/tmp/$(reboot)", "/tmp/a\nb", "`x`"})
        EXPECT_EQ(set_cap_config(0, path, "https://host/"), -1) << path;
    EXPECT_EQ(get_cap_realurl(address, sizeof address), 0);
    EXPECT_STREQ(address, "");
    EXPECT_EQ(set_cap_config(0, nullptr, std::string(300, 'u').c_str()), 0);
    for (int size : {300, 4}) {
        EXPECT_EQ(get_cap_realurl(address, size), 0);
        EXPECT_EQ(address, std::string(size == 4 ? 3 : 255, 'u'));
    }
    EXPECT_EQ(get_cap_realurl(nullptr, 4), -1);
    EXPECT_EQ(get_cap_realurl(address, 0), -1);
}

} // namespace
