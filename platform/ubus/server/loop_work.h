// SPDX-License-Identifier: Apache-2.0
// What a server does on the thread that runs uloop: functions that other threads post, and timers.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

extern "C" {
#include <libubox/uloop.h>
}

// A descriptor that uloop watches, from watch() to unwatch() or its end.
class WatchedFd : private uloop_fd {
  public:
    WatchedFd(int descriptor, std::function<void()> on_ready);
    ~WatchedFd() { unwatch(); }
    WatchedFd(const WatchedFd &) = delete;
    WatchedFd &operator=(const WatchedFd &) = delete;

    // Has the function called whenever there is something to read, or also when something can be written. It
    // may end this object.
    void watch(bool also_write = false);
    void unwatch() { uloop_fd_delete(this); }

  private:
    std::function<void()> ready;
};

class LoopWork {
  public:
    // Has `after_each` called after each function that is called here. Throws std::system_error.
    explicit LoopWork(std::function<void()> after_each);
    ~LoopWork();
    LoopWork(const LoopWork &) = delete;
    LoopWork &operator=(const LoopWork &) = delete;

    // Runs uloop until stop(), with what was posted before.
    void run();
    void stop();                               // any thread
    void post(std::function<void()> function); // any thread

    // On the loop's thread: has the function called once in so many milliseconds.
    void after(int milliseconds, std::function<void()> function);

  private:
    struct Timer : uloop_timeout {
        LoopWork *work = nullptr;
        uint64_t id = 0;
        std::function<void()> function;
        ~Timer() { uloop_timeout_cancel(this); }
    };
    static void on_timeout(uloop_timeout *timeout);
    void run_posted();

    std::function<void()> after_each_;
    int wake_fd_;
    bool stopping_ = false; // the loop's thread
    uint64_t last_timer_ = 0;
    std::map<uint64_t, std::unique_ptr<Timer>> timers_;
    std::mutex posted_mutex_;
    std::vector<std::function<void()>> posted_;
};
