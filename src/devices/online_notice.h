// SPDX-License-Identifier: Apache-2.0
// Whether a client's arrival is announced: "onlineNotice" of its entry in the runtime file.
#pragma once

#include "devices/bus_replies.h"

// The "onlineNotice" of the client in the runtime file: non-zero announces. 1 when the file or the client's
// entry is missing; -1 for a null or empty MAC. Any thread.
int get_device_inform(const char *mac, const BusReplies &replies = {});

// Gives the client's entry that value; the file is replaced whole or not at all. 0; -1, which is logged, for
// a null or empty MAC or when there is no file or it cannot be written. A client without an entry gets none.
// Any thread.
int update_onlineNotice(const char *mac, int value);
