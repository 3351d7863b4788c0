// SPDX-License-Identifier: Apache-2.0
// Single facts about a client device, read from the router's daemon. MACs are compared as the daemon spells
// them.
//
// A null or empty MAC is logged ("param is NULL") and gives -1; so does a daemon that does not answer, or
// that does not know the device, unless something else is said. Results through pointers are then left alone.
// Each call asks the daemon, unless it is given the replies of a piece of work that has asked already. Any
// thread.
#pragma once

#include <cstddef>

#include "devices/bus_replies.h"

// How a station is attached, by its "radio": "0" (cable) 0, "2.4G" 1, "5G" 2, "mesh" 3; -1 for other texts.
int get_joinWay(const char *radio);

// 0 when the SSID is that of the guest network on radio "2.4G" or "5G".
int get_guest_status(const char *ssid, const char *radio, const BusReplies &replies = {});

// 0 when the MAC is in the filter list, switched on or not.
int get_macFilter_status(const char *mac, const BusReplies &replies = {});

// 0, and the name that the user gave the device or else its own; -1, with an empty name, when the daemon does
// not know it.
int get_devName(const char *mac, char *name, size_t size, const BusReplies &replies = {});

// 0, and the station's limits in the daemon's unit with their switch.
int get_limitSpeed(const char *mac, int *up, int *down, int *limit_switch, const BusReplies &replies = {});

// 0 when the device is under parental control.
int judge_parentalControl(const char *mac, const BusReplies &replies = {});

// The parental switches of a device: "funcenable", "devurlenable", "devtimeenable", 0 when the daemon leaves
// one out.
int get_parentEnable(const char *mac, const BusReplies &replies = {});
int get_parentUrlEnable(const char *mac, const BusReplies &replies = {});
int get_parentTimeEnable(const char *mac, const BusReplies &replies = {});

// 0, and how long the device was online, in seconds.
int get_parentalControl_onlineTime(const char *mac, int *yesterday, int *today, int *week,
                                   const BusReplies &replies = {});

// 0, and the disconnection as the cloud counts it: 0 none, 2 for 600 s, 3 for 1800 s, 4 for 3600 s, the
// daemon's own number for another duration; and when it was set (seconds since the epoch).
int get_disconnectInfo(const char *mac, int *code, long *open_time, const BusReplies &replies = {});

// "DDHHMMSS" as seconds; a number that is missing counts as 0. 0, or -1 for a null or empty text.
int time_to_second(const char *text, int *seconds);
