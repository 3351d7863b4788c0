// SPDX-License-Identifier: Apache-2.0
// How long each client device of the router was connected today, announced on arrival and reported once a
// night.
//
// One thread, check_staStatus_proc, owns the station backup, the runtime file and the day file; what is said
// to be of that thread must not run beside it.
#pragma once

#include <json-c/json.h>

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

// Compares the clients with those of the previous poll: announces who came, closes who went. 0, or -1 when
// the previous poll's list cannot be read. Of the status thread.
int check_staList();
// Forgets the previous poll. Of the status thread.
void clear_backupSta();

// Rebuilds the runtime file from the current clients. Of the status thread.
void runtimeList_init();
// Closes the runtime of a client that went. Of the status thread.
void runtimeList_update(const char *mac);
// Writes the day file from the runtime file. `seconds_left`, until midnight, is not added to the totals. Of
// the status thread.
void runtimeList_finalUpdate(long seconds_left);
// The day file as the array of the nightly report, owned by the caller; null when it cannot be read. Any
// thread.
json_object *runtimeList_report();

// Sends the local event that a client arrived. 0, or -1 for a null argument. Any thread.
int online_report(const char *mac, const char *name);
// runtimeList_update; 0, or -1 for a null MAC. Of the status thread.
int offline_proc(const char *mac);
