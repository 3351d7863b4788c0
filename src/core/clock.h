// SPDX-License-Identifier: Apache-2.0
// The only place that sleeps or reads the time, so that a test can link another clock that moves by itself.
// Any thread may call these.
#pragma once

#include <ctime>

// Sleeps for the whole time given, signals notwithstanding.
void pause_seconds(unsigned seconds);
void pause_millis(unsigned millis);

// Seconds since the epoch. The clock of the day may be set at any moment: on a router it starts in 1970 and
// is right once the network is up.
time_t now_seconds();

// Seconds of a clock that nobody sets and that does not stop while the system sleeps, for intervals; where it
// starts means nothing.
time_t monotonic_seconds();

// The local time now, broken down.
struct tm local_time();
