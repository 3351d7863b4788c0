// SPDX-License-Identifier: Apache-2.0
#include "upgrade/upgrade_turn.h"

#include <atomic>
#include <cstring>

#include "core/clock.h"
#include "core/text.h"
#include "upgrade/firmware.h"

namespace {

struct Acceptance {
    char version[128];
    char md5[33];
    time_t time; // of the monotonic clock
};

std::mutex turn;                   // held by the upgrade under way
std::atomic<uint64_t> acceptances; // so far
std::mutex last_mutex;             // guards `last`
Acceptance last = {.version = "", .md5 = "", .time = 0};

} // namespace

UpgradeTurn::UpgradeTurn()
    : accepted_before_(acceptances), lock_(turn), granted_(acceptances == accepted_before_) {}

void UpgradeTurn::accepted(const char *version, const char *md5) {
    std::lock_guard lock(last_mutex);
    copy_text(last.version, version);
    copy_text(last.md5, md5);
    last.time = monotonic_seconds();
    acceptances++;
}

bool accepted_lately(const char *version, const char *md5) {
    std::lock_guard lock(last_mutex);
    return monotonic_seconds() - last.time < REPEAT_SECONDS && strcmp(last.version, version) == 0 &&
           same_digest(last.md5, md5);
}
