// SPDX-License-Identifier: Apache-2.0
// The clock of a daemon whose pauses are short: it goes PACE times as fast from when the program starts.
#include "core/clock.h"

#include <chrono>
#include <thread>

namespace {

constexpr long PACE = 30;
constexpr long NANOS = 1000000000;

timespec read_clock(clockid_t clock) {
    timespec now = {};
    clock_gettime(clock, &now);
    return now;
}

const timespec day_began = read_clock(CLOCK_REALTIME);
const timespec boot_began = read_clock(CLOCK_BOOTTIME);

time_t hurried(clockid_t clock, const timespec &began) {
    const timespec now = read_clock(clock);
    return began.tv_sec + PACE * (now.tv_sec - began.tv_sec) + PACE * (now.tv_nsec - began.tv_nsec) / NANOS;
}

} // namespace

void pause_millis(unsigned millis) {
    std::this_thread::sleep_for(std::chrono::milliseconds(millis) / PACE);
}

void pause_seconds(unsigned seconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1000) * seconds / PACE);
}

time_t now_seconds() {
    return hurried(CLOCK_REALTIME, day_began);
}

time_t monotonic_seconds() {
    return hurried(CLOCK_BOOTTIME, boot_began);
}

struct tm local_time() {
    const time_t now = now_seconds();
    struct tm local = {};
    localtime_r(&now, &local);
    return local;
}
