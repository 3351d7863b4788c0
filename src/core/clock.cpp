// SPDX-License-Identifier: Apache-2.0
#include "core/clock.h"

#include <cerrno>

static void pause_for(timespec time) {
    while (nanosleep(&time, &time) == -1 && errno == EINTR) {
    }
}

void pause_seconds(unsigned seconds) {
    pause_for({static_cast<time_t>(seconds), 0});
}

void pause_millis(unsigned millis) {
    pause_for({static_cast<time_t>(millis / 1000), static_cast<long>(millis % 1000) * 1000000});
}

time_t now_seconds() {
    return time(nullptr);
}

time_t monotonic_seconds() {
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec;
}

struct tm local_time() {
    time_t now = now_seconds();
    struct tm local = {};
    localtime_r(&now, &local);
    return local;
}
