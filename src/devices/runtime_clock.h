// SPDX-License-Identifier: Apache-2.0
// What a clock of the day that is set while the agent runs means to the runtime file.
#pragma once

// When the clock of the day and the monotonic one have parted by more than a few seconds since the last call,
// moves the timestamps of today's runtimes by as much, so that everyone keeps the time that they have been
// online. The first call only takes the clocks' readings. Of the status thread, before it uses a timestamp.
void follow_clock();
