// SPDX-License-Identifier: Apache-2.0
// Today's runtime file and the day file that is made of it. What is said to be of the status thread
// (runtime.h) must not run beside it.
#pragma once

#include <json-c/json.h>

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
