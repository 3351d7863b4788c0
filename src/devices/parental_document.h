// SPDX-License-Identifier: Apache-2.0
// The rules of a device under parental control, as the device document shows them. Any thread.
#pragma once

#include "devices/bus_replies.h"

// Arrays of the device's rules, owned by the caller; null when it has none, which leaves *count at 0, or
// without memory. A null or empty MAC is logged ("param is NULL") and has none.

// [{"timeFrame": "08:30-21:05", "daysOfWeek": [1,0,1,0,0,0,1], "open": true}]
JsonRoot get_parentalTimeList(const char *mac, size_t *count, const BusReplies &replies = {});
// The addresses of the rules that are no application's: ["games.example.com"]
JsonRoot get_parentalWebList(const char *mac, size_t *count, const BusReplies &replies = {});
// The same with their switches: [{"open": true, "url": "games.example.com"}]
JsonRoot get_parentalNewWebList(const char *mac, size_t *count, const BusReplies &replies = {});
// The rules of one kind of application, 1 to 6; an empty array when there are none:
// [{"open": true, "appname": "Blocks"}]
JsonRoot get_app_controllist(const char *mac, int apptype, const BusReplies &replies = {});

// The members about the rules of a device: "parentalTimeControl", "parentalWebControl" and the six kinds of
// application. False, with the device half filled, without memory.
bool add_parental_rules(json_object *device, const char *mac, const BusReplies &replies);
