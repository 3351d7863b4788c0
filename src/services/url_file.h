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
    explicit UrlFile(const char *address, LogSite site);
    UrlFile(const UrlFile &) = delete;
    UrlFile &operator=(const UrlFile &) = delete;

    explicit operator bool() const { return written; }

  private:
    std::unique_lock<std::mutex> turn;
    bool written;
};
