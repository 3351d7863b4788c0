// SPDX-License-Identifier: Apache-2.0
// "physicsInfo": what the router's hardware says of itself.
#pragma once

#include <cstdint>
#include <string>

// Answers 200 {"cpu":{"cores","load":[3],"usage"},"memory":{"total","available"},"flash":{"total","free"},
// "temperatures":[{"name","celsius"}],"uptime"}: usage in percent of all cores over a quarter of a second,
// which the call takes; memory and flash in KiB; uptime in seconds. What the system does not tell is 0 or
// missing from its list.
int physics_info_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

// The parts that read texts of /proc (proc(5)), whatever they hold.
struct CpuTimes {
    unsigned long long busy, total; // ticks of all cores since the start
};
CpuTimes cpu_times(const std::string &stat);
int cpu_usage(const CpuTimes &before, const CpuTimes &after);  // percent, 0 to 100
long meminfo_kib(const std::string &meminfo, const char *key); // 0 when it is not there
