// SPDX-License-Identifier: Apache-2.0
// Whether a client's arrival is announced.
#pragma once

#include "devices/bus_replies.h"

// The "onlineNotice" of the client in the runtime file: non-zero announces. 1 when the file or the client's
// entry is missing; -1 for a null or empty MAC. Any thread.
int get_device_inform(const char *mac, const BusReplies &replies = {});
