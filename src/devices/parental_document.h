// SPDX-License-Identifier: Apache-2.0
// The rules of a device under parental control, as the device document shows them. Any thread.
#pragma once

#include "devices/bus_replies.h"

// Arrays of the device's rules, owned by the caller, empty when it has none; null without memory, and for a
// null or empty MAC, which is logged ("param is NULL").

// [{"timeFrame": "08:30-21:05", "daysOfWeek": [1,0,1,0,0,0,1], "open": true}]
JsonRoot get_parentalTimeList(const char *mac, const BusReplies &replies = {});
// The addresses of the rules that are no application's: ["games.example.com"]
JsonRoot get_parentalWebList(const char *mac, const BusReplies &replies = {});
// The same with their switches: [{"open": true, "url": "games.example.com"}]
JsonRoot get_parentalNewWebList(const char *mac, const BusReplies &replies = {});
// The rules of one kind of application, 1 to 6: [{"open": true, "appname": "Blocks"}]
JsonRoot get_app_controllist(const char *mac, int apptype, const BusReplies &replies = {});

// Adds what the document says of the rules: "parentalTimeControl" and "parentalWebControl" when there are
// any, and the six kinds of application. False without memory; the device is then incomplete.
bool add_parental_rules(json_object *device, const char *mac, const BusReplies &replies);
