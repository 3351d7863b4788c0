// SPDX-License-Identifier: Apache-2.0
// A mutex that is given to those who wait in the order in which they came: whoever takes it again and again
// holds nobody back for more than one turn. Used as std::mutex is.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

class FairMutex {
  public:
    void lock() {
        std::unique_lock guard(mutex_);
        const uint64_t ticket = next_++;
        turn_.wait(guard, [&] { return ticket == serving_; });
    }
    void unlock() {
        std::lock_guard guard(mutex_);
        serving_++;
        turn_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable turn_;
    uint64_t next_ = 0;
    uint64_t serving_ = 0;
};
