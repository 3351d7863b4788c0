// SPDX-License-Identifier: Apache-2.0
// How often, with what and with which pauses the agent runs a helper program.
#pragma once

#include <gmock/gmock.h>

#include "support/helper_stub.h"
#include "support/main_log.h"
#include "support/moving_clock.h"

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
        EXPECT_THAT(log_messages(), testing::Contains(message));
    }

    HelperStub helper{"post_data"};
};
