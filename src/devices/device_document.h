// SPDX-License-Identifier: Apache-2.0
// The document of all client devices.
#pragma once

#include <cstddef>
#include <mutex>

#include <json-c/json.h>

#include "devices/bus_replies.h"

inline constexpr size_t MOST_DEVICES = 128; // stations behind them are left out
inline constexpr size_t DEVICE_MAC_SIZE = 16;

// Held for every build and for a whole settings request, so that a document is either of before or of after
// it.
extern std::mutex apdevice_mutex;

// What a document is made for.
enum DocumentMode {
    DOCUMENT_PROPERTY = 0,
    DOCUMENT_REPORT = 1, // without "onlineTime", which would make every report a new one
    DOCUMENT_EVENT = 2,  // likewise
    DOCUMENT_TIMED = 3,  // as for the property; nobody asks for it
};

// {"apDevices": [...]}, owned by the caller, with a device per station that the router lists; empty when it
// lists none. Null without memory. Takes apdevice_mutex. Any thread.
json_object *get_apDevice_config(int mode);

// The same devices, "onlineTime" included, for those elements of the array (objects with a "mac", the first
// 128) that are stations of the router, in the array's order and whatever their spelling: an array, owned by
// the caller. Null for a null argument or without memory. Takes apdevice_mutex. Any thread.
json_object *get_meshApDevice_config(json_object *stations);
// One of several such lists, all of the same replies. The caller holds apdevice_mutex.
JsonRoot get_meshApDevice_config(json_object *stations, const BusReplies &replies);
