// SPDX-License-Identifier: Apache-2.0
// The end of a wait, in the bus library's terms: 0 milliseconds is no limit, fewer are over at once.
#pragma once

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>

class Deadline {
  public:
    explicit Deadline(int timeout)
        : unlimited_(timeout == 0), end_(Clock::now() + std::chrono::milliseconds(std::max(timeout, 0))) {}

    // Milliseconds left as poll() takes them, rounded up: -1 without limit, 0 when over.
    int remaining() const {
        if (unlimited_) return -1;
        const int64_t left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now()).count();
        return static_cast<int>(std::clamp<int64_t>(left, 0, INT_MAX));
    }
    bool over() const { return remaining() == 0; }

  private:
    using Clock = std::chrono::steady_clock;

    bool unlimited_;
    Clock::time_point end_;
};
