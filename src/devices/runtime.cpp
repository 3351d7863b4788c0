// SPDX-License-Identifier: Apache-2.0
#include "devices/runtime.h"

#include <cstdlib>

#include "core/clock.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/thread.h"
#include "devices/runtime_clock.h"
#include "devices/runtime_file.h"
#include "devices/runtime_list.h"
#include "devices/station_list.h"
#include "https/helper_program.h"
#include "relay/event_client.h"

namespace {

// Seconds of the local day.
constexpr long EARLIEST_REPORT = 7200;
constexpr int REPORT_RANGE = 14400;
constexpr long REPORT_WINDOW = 4;
constexpr long MORNING = 21600; // no report point lies behind it
constexpr long CLOSING_FIRST = 86396;
constexpr long DAY = 86400;

constexpr unsigned ROUNDS_PER_POLL = 25;
constexpr unsigned CLOSING_PAUSE = 5; // seconds: into the next day

void (*further_work)() = nullptr; // of each round

constexpr size_t QUOTED_NAME_MAX = 150; // leaves the datagram room for the rest

long second_of_day() {
    struct tm now = local_time();
    return now.tm_hour * 3600L + now.tm_min * 60L + now.tm_sec;
}

void report_last_day() {
    LOG("start report");
    int status = -1;
    run_post_data(PostDataMode::runtime_report, &status);
    LOG("ret:%d", status);
}

void close_day(long second) {
    LOG("start update log");
    runtimeList_finalUpdate(DAY - second);
    remove_runtime_file();
    clear_backupSta();
    pause_seconds(CLOSING_PAUSE);
}

// The night's two tasks, each once; both are armed again after midnight and after the morning.
void nightly_round(StaStatusState *state, long second) {
    if (!state->done && second > state->report_point && second <= state->report_point + REPORT_WINDOW) {
        report_last_day();
        state->done = true;
    } else if (!state->done && second >= CLOSING_FIRST) {
        close_day(second);
        state->done = true;
    } else if ((second < EARLIEST_REPORT || second > MORNING) && second < CLOSING_FIRST - 1) {
        state->done = false;
    }
}

} // namespace

void set_capture_round(void (*round)()) {
    further_work = round;
}

StaStatusState sta_status_start(unsigned seed) {
    return {.report_point = rand_r(&seed) % REPORT_RANGE + EARLIEST_REPORT};
}

void check_staStatus_round(StaStatusState *state) {
    follow_clock();
    const long second = second_of_day();
    if (state->round++ % ROUNDS_PER_POLL == 0) check_staList();
    if (further_work) further_work();
    nightly_round(state, second);
}

void *check_staStatus_proc(void *) {
    StaStatusState state = sta_status_start(static_cast<unsigned>(now_seconds()));
    for (;;) {
        check_staStatus_round(&state);
        pause_seconds(1);
    }
}

int runTime_threadStart() {
    LOG("runtimeList init");
    return start_detached(check_staStatus_proc, nullptr) == 0 ? 0 : -1;
}

int online_report(const char *mac, const char *name) {
    if (!mac || !name) {
        LOG("param is NULL");
        return -1;
    }
    // a client chooses its own name, so it is quoted rather than pasted, and cut to what has room
    send_event<256>("{\"action\": \"deviceConnect\", \"mac\": \"%s\", \"devName\": %s, \"time\": %d}", mac,
                    JsonQuote(name, QUOTED_NAME_MAX).c_str(), static_cast<int>(now_seconds()));
    return 0;
}

int offline_proc(const char *mac) {
    if (!mac) {
        LOG("param is NULL");
        return -1;
    }
    runtimeList_update(mac);
    return 0;
}
