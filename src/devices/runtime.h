// SPDX-License-Identifier: Apache-2.0
// How long each client device of the router was connected today, announced on arrival and reported once a
// night.
//
// One thread, check_staStatus_proc, polls the clients and writes the day file; what is said to be of that
// status thread must not run beside it. Today's runtime file others change too (runtime_file.h).
#pragma once

// Names what each round also does, between the client poll and the night's tasks: the capture's part. main
// sets it before the thread starts; none by default.
void set_capture_round(void (*round)());

// Starts check_staStatus_proc, once the SDK has started. 0, or -1 when the thread cannot be made.
int runTime_threadStart();
// Thread body: one round a second. Never returns.
void *check_staStatus_proc(void *);

// What the body keeps between its rounds.
struct StaStatusState {
    long report_point; // second of the local day
    bool done = false; // tonight's work is done
    unsigned round = 0;
};
// Chooses the report point, 02:00:00 to 05:59:59, from the seed.
StaStatusState sta_status_start(unsigned seed);
// One round, without the second's pause. Of the status thread.
void check_staStatus_round(StaStatusState *state);

// Sends the local event that a client arrived. 0, or -1 for a null argument. Any thread.
int online_report(const char *mac, const char *name);
// runtimeList_update; 0, or -1 for a null MAC. Of the status thread.
int offline_proc(const char *mac);
