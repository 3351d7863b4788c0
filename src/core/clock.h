// SPDX-License-Identifier: Apache-2.0
// The only place that sleeps or reads the time, so that a test can link another clock that moves by itself.
// Any thread may call these.
#pragma once

#include <ctime>

// Sleeps for the whole time given, signals notwithstanding.
void pause_seconds(unsigned seconds);
void pause_millis(unsigned millis);

// Seconds since the epoch.
time_t now_seconds();

// The local time now, broken down.
struct tm local_time();
