// SPDX-License-Identifier: Apache-2.0
// The property "timeLed": the daemon's timer task that switches the LED mode between a start and an end time.
// Entries are applied like those of "timeReboot".
#pragma once

#include <cstdint>

#include "properties/schedule.h"

struct LedEntry {
    char start[8]; // hours and minutes with a colon
    char end[8];
    int32_t days[DAYS];
    int32_t enable; // -1: the request did not say
};

// Slots of the property table.
int timeLed_init();
int timeLed_set(const char *context, const char *value, char *reply, int reply_length);
int timeLed_get(const char *context, char *output, int length);

// Posts a changed document; in no table.
int timeLed_report();

// Starts applying the list of the last request. 0, or -1 when the thread cannot be made. The caller keeps
// sets away.
int set_timeLed_config();
int timeLed_threadStart();

// Applies one entry: adds the task, or modifies it when there is one. The daemon's result; -1 for a null
// entry or no answer. Any thread.
int set_one_timeLed(const LedEntry *entry);
int add_one_timeLed(const LedEntry *entry);
int modify_one_timeLed(const LedEntry *entry);

// Splits "22:30-06:00" at its first hyphen, each half cut to 7 characters. 0; -1 for null or no hyphen
// within 31.
int cut_timeLed_timeFrame(const char *frame, char (&start)[8], char (&end)[8]);

// Adds the schedule to a document. 0, or -1 when memory ran out.
int get_timeLed_config(json_object *document);
json_object *get_timeLed_dayOfWeek_obj(const int32_t days[DAYS]);

int get_taskId();            // reads the id of the LED task; 0, or -1 when there is none
int delete_timeLed_config(); // the daemon's result
