// SPDX-License-Identifier: Apache-2.0
// The property "timeReboot": the daemon's timer task that restarts the router. A request's entries are
// applied one after the other to that one task, the first entry last, so the first one is what remains.
#pragma once

#include <cstdint>

#include "properties/schedule.h"

struct RebootEntry {
    char time[32];     // hours and minutes with a colon
    int32_t days[8];   // slot 0 is not used
    int32_t day_count; // of the request; only entries with 7 are applied
    int32_t enable;    // -1: the request did not say
};

// Slots of the property table.
int timeReboot_init();
int timeReboot_set(const char *context, const char *value, char *reply, int reply_length);
int timeReboot_get(const char *context, char *output, int length);

// Posts a changed document; in no table.
int timeReboot_report();

// Starts applying the list of the last request. 0, or -1 when the thread cannot be made. The caller keeps
// sets away.
int set_timeReboot_config();
int timeReboot_threadStart();

// Applies one entry: adds the task, or modifies it when there is one. The daemon's result; -1 for a null
// entry, one without seven days, or no answer. Any thread.
int set_one_timeReboot(const RebootEntry *entry);
int add_one_timeReboot(const RebootEntry *entry);
int modify_one_timeReboot(const RebootEntry *entry);

// Adds the schedule to a document. 0, or -1 when memory ran out.
int get_timeReboot_config(json_object *document);
json_object *get_timeReboot_dayOfWeek_obj(const int32_t days[DAYS]);

int update_taskId();            // reads the id of the reboot task; 0, or -1 when there is none
int delete_timeReboot_config(); // the daemon's result
