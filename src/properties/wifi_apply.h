// SPDX-License-Identifier: Apache-2.0
// A change of the main wireless networks, and what follows from it.
#pragma once

#include "properties/wifi_info.h"

// Applies a request: encryption and hidden flags, the restart event (with `interface_name`), the guest
// networks' names, then the networks themselves. The daemon's result; -1 when the request lacks something.
// Any thread, one at a time.
int set_wifi_config(const WifiRecord *wifi, const char *interface_name);
