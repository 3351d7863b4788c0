// SPDX-License-Identifier: Apache-2.0
// The router's list of client devices, as both the poll and the runtime file read it. Any thread.
#pragma once

#include "core/handles.h"

// The stations that the router lists, borrowed from the root; null, which is logged, when it does not answer
// a list.
json_object *get_station_array(JsonRoot *root);

// The name that the user gave the station or else its own; may be null.
const char *station_name(json_object *station);
