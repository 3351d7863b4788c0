// SPDX-License-Identifier: Apache-2.0
// The work of parental control that takes its time: pushing rules to the daemon one by one, and putting
// devices under supervision.
//
// A starter takes a copy of what it is given and returns at once: 0, or -1, which is logged, when the thread
// cannot be made or too many pieces of work wait already (work_lane.h). Detached threads do the work and end
// with it: one pushes the rule sets, one set after the other in the order in which they came, the other adds
// and removes devices, likewise in order. Any thread.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "devices/parental_writes.h"

struct WebControl {
    std::string mac;
    int32_t controlPolicy; // ControlPolicy, or what else the request says, which is refused rule by rule
    std::vector<UrlRule> rules;
};
struct AppControl {
    std::string mac;
    std::vector<AppRule> rules;
};
struct TimeControl {
    std::string mac;
    std::vector<TimeRule> rules;
};

// Held while a rule set is pushed, so that no two interleave.
extern std::mutex parentcontrol_mutex;

// Addresses without and with switches of their own: a rule a second, then the policy.
int webControl_threadStart(const WebControl &set);
int newWebControl_threadStart(const WebControl &set);
// Applications: rules that the daemon has are switched, others added, both without pause; then the policy,
// which is BLACK. A rule without a URL that the daemon does not have either is logged and passed over.
int app_control_threadStart(const AppControl &set);
// Time rules, one a second.
int timeControl_threadStart(const TimeControl &set);

enum ParentalLevel : int { LEVEL_NONE = 0, LEVEL_ADD = 1, LEVEL_REMOVE = 2 };

// What the last request asked for that is not carried out yet; the work itself goes by what it was given.
extern std::atomic<int> parentcontrol_level;

// Puts a device under supervision, or takes it out, two seconds later or soon after that.
int parentcontrol_execute_thread(const char *mac, const char *name, int level);
// What will become of the device by work that waits; LEVEL_NONE when none does.
int waiting_parental_level(const char *mac);
// Returns when none waits for the device any more.
void wait_for_parental_level(const char *mac);
