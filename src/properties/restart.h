// SPDX-License-Identifier: Apache-2.0
// The announcement that comes before a change that takes the network down.
#pragma once

inline constexpr int USUAL_DELAY = -1; // as long as a network restart usually takes here

// Sends the restart event with that interface name and delay in seconds, and gives it two seconds to reach
// the cloud.
void announce_restart(const char *interface_name, int delay = USUAL_DELAY);
