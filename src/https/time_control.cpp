// SPDX-License-Identifier: Apache-2.0
#include "https/time_control.h"

#include <cstdlib>

#include "core/clock.h"
#include "core/log.h"
#include "https/helper_program.h"

namespace {

constexpr long EARLIEST_POINT = 82800; // seconds
constexpr int POINT_RANGE = 3600;
constexpr int ATTEMPTS = 10;
constexpr unsigned ATTEMPT_PAUSE = 60; // seconds

// Fetches until it succeeds, pausing after each attempt, the last one too; returns the number of attempts.
int fetch_settings() {
    int status = 1;
    int times = 0;
    while (status != 0 && times < ATTEMPTS) {
        run_post_data(PostDataMode::time_settings, &status);
        LOG("ret:%d", status);
        times++;
        pause_seconds(ATTEMPT_PAUSE);
    }
    return times;
}

} // namespace

TimeControlState time_control_start(unsigned seed) {
    TimeControlState state = {.report_point = rand_r(&seed) % POINT_RANGE + EARLIEST_POINT};
    LOG("report_point:%ld", state.report_point);
    return state;
}

void timeControl_round(TimeControlState *state) {
    if (state->count % state->report_point == 0) {
        LOG("cnt:%ld start get web timecontrol", state->count);
        int times = fetch_settings();
        LOG("times:%d", times);
        state->count = 0;
    }
    state->count++;
}

void *timeControl_proc(void *) {
    TimeControlState state = time_control_start(static_cast<unsigned>(now_seconds()));
    for (;;) {
        timeControl_round(&state);
        pause_seconds(1);
    }
}
