// SPDX-License-Identifier: Apache-2.0
// One upgrade at a time, whichever way its offer came. Any thread.
#pragma once

#include <cstdint>
#include <mutex>

inline constexpr long REPEAT_SECONDS = 600; // how long accepted_lately remembers

// An upgrade holds one from the first file that it removes to the end of its hand-over. Making one waits for
// the upgrade under way.
class UpgradeTurn {
  public:
    UpgradeTurn();
    // False when the router accepted an upgrade while this one waited: the device is about to restart, and
    // nothing may be touched. An offer that comes when all is over is a new one.
    explicit operator bool() const { return granted_; }
    // The router has accepted the image: those that wait are refused.
    void accepted(const char *version, const char *md5);

  private:
    uint64_t accepted_before_;
    std::unique_lock<std::mutex> lock_;
    bool granted_;
};

// True within ten minutes after the router accepted that version with that digest.
bool accepted_lately(const char *version, const char *md5);
