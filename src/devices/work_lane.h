// SPDX-License-Identifier: Apache-2.0
// Work about client devices that is done later, piece after piece in the order in which it came, on a
// detached thread that lives as long as there is any. Any thread may call this, but what says that it is the
// lane's.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>

#include "core/log.h"

inline constexpr size_t MOST_WAITING = 128; // pieces of one lane, the one at work included

struct WorkPiece {
    std::string mac;
    int level; // what becomes of the device; 0 says nothing about that
    std::function<void()> act;
};

class WorkLane {
  public:
    // The body of the lane's thread; it returns once waiting() has said 0.
    explicit WorkLane(void *(*body)(void *)) : body_(body) {}

    // 0, or -1, logged in the caller's name, when MOST_WAITING wait or the thread cannot be made.
    int add(WorkPiece piece, LogSite site = LogSite::here());

    // Of the lane's thread: how many pieces wait; does the first, which counts as waiting until it is done.
    size_t waiting();
    void do_first();

    // The level of the last waiting piece about the device, 0 without one; returns once none says anything.
    int last_level(const char *mac);
    void wait_for(const char *mac);

  private:
    int level_of(const char *mac) const;

    void *(*body_)(void *);
    std::mutex mutex_;
    std::condition_variable done_;
    std::deque<WorkPiece> pieces_;
    bool running_ = false;
};
