// SPDX-License-Identifier: Apache-2.0
// The file in which the agent leaves an address for a helper program. All services share it, so the one that
// writes it keeps the others away until its helper has ended.
#pragma once

#include <mutex>

#include "core/log.h"

inline constexpr char URL_FILE[] = "/tmp/url.txt";

// Any thread; makes others wait as long as it lives.
class UrlFile {
  public:
    // Writes the address, whole and without a line end; a failure is logged in the caller's name.
    UrlFile(const char *address, LogSite site);
    // The same, but has no turn, and has written nothing, when another one lives.
    UrlFile(const char *address, LogSite site, std::try_to_lock_t);
    UrlFile(const UrlFile &) = delete;
    UrlFile &operator=(const UrlFile &) = delete;

    explicit operator bool() const { return written; }
    bool has_turn() const { return turn.owns_lock(); }

  private:
    void write(const char *address, LogSite site);
    std::unique_lock<std::mutex> turn;
    bool written = false;
};
