// SPDX-License-Identifier: Apache-2.0
// The report after an upgrade: what the log tells of, and when it is sent.
#include "upgrade/upgrade_report.h"

#include <fstream>

#include "https/helper_requests.h"
#include "support/helper_runs.h"

namespace {

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
    // coming online again and again while it fails makes no more of them
    helper.answer("1");
    clear_main_log();
    moving_clock::on_pause([](auto) { EXPECT_EQ(upgrade_result_thread("/tmp/upgrade.log"), 0); });
    EXPECT_EQ(upgrade_result_thread("/tmp/upgrade.log"), 0);
    EXPECT_TRUE(wait_for_log("pthread_exit"));
    EXPECT_THAT(log_messages(), testing::Contains("the report is under way").Times(10));
    EXPECT_EQ(helper.take_runs(), "3\n3\n3\n3\n3\n3\n3\n3\n3\n3\n");
}

TEST(UpgradeInfo, ReadsTheFirstRecordOfTheLog) {
    const struct {
        const char *log;
        int result;
        const char *version, *strategy;
    } cases[] = {
        {"[t]x\n[t]buf:{\"newversion\": \"V2\", \"strategy\": \"s\"}\n[t]{\"newversion\": \"V3\"}\n", 0, "V2",
         "s"},
        {"", HEAD_SIGN_FAILED, "", ""},
        {"[t][f][1]nothing here\n", HEAD_SIGN_FAILED, "", ""},
        {"[t] newversion without a record\n", HEAD_JSON_FAILED, "", ""},
        {"[t]{\"newversion\": \"V2\", \"strat", HEAD_JSON_FAILED, "", ""},
        {"[t]{\"x newversion\": \"V2\"}", HEAD_NO_MEMBER, "", ""},
        {"[t]{\"newversion\": \"\", \"strategy\": \"s\"}", HEAD_EMPTY_MEMBER, "", ""},
        {"[t]{\"newversion\": \"V2\"}", HEAD_NO_MEMBER, "V2", ""},
        {"[t]{\"newversion\": \"V2\", \"strategy\": \"\"}", HEAD_EMPTY_MEMBER, "V2", ""},
        {"[t]{\"newversion\": \"V2.0.0.0\", \"strategy\": 1234567}", 0, "V2.0.0.", "1234567"},
    };
    for (const auto &c : cases) {
        std::ofstream("/tmp/upgrade.log") << c.log;
        char version[8] = {}, strategy[8] = {};
        EXPECT_EQ(get_upgrade_info("/tmp/upgrade.log", version, strategy, 8, 8), c.result) << c.log;
        EXPECT_STREQ(version, c.version) << c.log;
        EXPECT_STREQ(strategy, c.strategy) << c.log;
    }
    char text[8];
    EXPECT_EQ(get_upgrade_info("/tmp/none", text, text, 8, 8), HEAD_NO_LOG);
    EXPECT_EQ(get_upgrade_info(nullptr, text, text, 8, 8), HEAD_BAD_ARGUMENT);
    EXPECT_EQ(get_upgrade_info("/tmp/none", nullptr, text, 8, 8), HEAD_BAD_ARGUMENT);
    EXPECT_EQ(get_upgrade_info("/tmp/none", text, text, 0, 8), HEAD_BAD_ARGUMENT);
}

} // namespace
