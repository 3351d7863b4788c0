// SPDX-License-Identifier: Apache-2.0
// When the time-control settings are fetched.
#include "https/time_control.h"

#include <set>

#include "support/helper_runs.h"

namespace {

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

TEST_F(HelperRuns, PointsAreSpreadOverTheirRange) {
    std::set<long> settings;
    for (unsigned seed = 0; seed < 500; seed++) {
        settings.insert(time_control_start(seed).report_point);
    }
    EXPECT_TRUE(*settings.begin() >= 82800 && *settings.rbegin() <= 86399 && settings.size() > 200);
}

} // namespace
