// SPDX-License-Identifier: Apache-2.0
// The end of a wait, in the bus library's terms: 0 milliseconds is no limit, fewer are over at once.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <ctime>

inline int64_t monotonic_millis() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

class Deadline {
  public:
    explicit Deadline(int timeout)
        : unlimited_(timeout == 0), end_(monotonic_millis() + std::max(timeout, 0)) {}

    // Milliseconds left as poll() takes them: -1 without limit, 0 when over.
    int remaining() const {
        if (unlimited_) return -1;
        return static_cast<int>(std::clamp<int64_t>(end_ - monotonic_millis(), 0, INT_MAX));
    }
    bool over() const { return remaining() == 0; }

  private:
    bool unlimited_;
    int64_t end_;
};
