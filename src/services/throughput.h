// SPDX-License-Identifier: Apache-2.0
// The services that tell rates, in bytes per second: the WAN's, those of attached devices, and what a
// download test reaches. For the service table: called by the SDK from any thread; the two arguments in the
// middle are not used.
#pragma once

#include <cstdint>

// Always 200 {"upSpeed", "downSpeed"}, 0 where the daemon does not tell.
int monitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"url", "time", "interval"}, each optional: an address of at most 127 bytes, seconds (8),
// milliseconds between measurements (1000). 200 {"downSpeed"}, 0 when nothing was measured; no answer to null
// or to what is no JSON, which leaves set_flag up. Blocks for the time, 600 seconds at most, with set_flag
// up.
int maxMonitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"mac"}, 63 bytes kept. 200 {"upSpeed", "downSpeed", "networkStatus"}; 400 "{}" when the device is
// unknown or offline or the daemon does not answer; no answer to null or to what is no JSON.
int apMonitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// 200 {"monitorSpeeds": [the same with "mac"]} of all that are online, or 400 "{}"; answered as
// "apMonitorSpeed".
int allApMonitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

// Has the daemon download from the address, for `time` seconds, measuring every `interval` milliseconds. 0,
// or -1 when it refuses. Any thread.
int set_speedTest(const char *url, int time, int interval);

// Watches a test of `time` seconds in ten looks; the best speed that the daemon said, 0 for none. Any thread;
// blocks for that time.
int get_maxSpeed(int time);
