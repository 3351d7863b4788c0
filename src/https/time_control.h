// SPDX-License-Identifier: Apache-2.0
// The daily fetch of the time-control settings, which the helper program does; the agent schedules it.
#pragma once

// Thread body: one series of fetches at once, the next about a day after the end of the one before. Never
// returns.
void *timeControl_proc(void *);

// What the body keeps between its rounds of about one second.
struct TimeControlState {
    long report_point; // rounds between two series
    long count = 0;
};
// Chooses the report point, 82800 to 86399, from the seed.
TimeControlState time_control_start(unsigned seed);
// One round, without the second's pause: a series of fetches when one is due.
void timeControl_round(TimeControlState *state);
