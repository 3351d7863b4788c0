// SPDX-License-Identifier: Apache-2.0
// The services that tell rates, in bytes per second: the WAN's, those of attached devices, and what a
// download test reaches.
#pragma once

#include <cstdint>

// For the service table: called by the SDK from any thread; the two arguments in the middle are not used.
// maxMonitorSpeed blocks for the time of its test, 600 seconds at most.
int monitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int maxMonitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int apMonitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int allApMonitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

// Has the daemon download from the address, for `time` seconds, measuring every `interval` milliseconds. 0,
// or -1 when it refuses. Any thread.
int set_speedTest(const char *url, int time, int interval);

// Watches a test of `time` seconds in ten looks; the best speed that the daemon said, 0 for none. Any thread;
// blocks for that time.
int get_maxSpeed(int time);
