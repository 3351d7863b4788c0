// SPDX-License-Identifier: Apache-2.0
// What a process begins with that core starts.
#pragma once

#include <spawn.h>

// Attributes for posix_spawn: every signal as the system has it. The agent ignores SIGPIPE, and a program
// that goes on when nobody reads it any more would outlive the agent.
class OwnSignals {
  public:
    explicit OwnSignals(short more_flags = 0); // further POSIX_SPAWN_* that need no value
    ~OwnSignals();
    OwnSignals(const OwnSignals &) = delete;
    OwnSignals &operator=(const OwnSignals &) = delete;

    int error() const { return error_; } // the error number when they could not be made, else 0
    const posix_spawnattr_t *get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_ = {};
    int error_;
};
