// SPDX-License-Identifier: Apache-2.0
// One thread's loop over descriptors, timers and functions posted by other threads. run() and everything it
// calls belong to one thread; stop() and post() are for any.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

class EventLoop {
  public:
    using Ready = std::function<void(short events)>; // poll events

    EventLoop(); // throws std::system_error
    ~EventLoop();
    EventLoop(const EventLoop &) = delete;
    EventLoop &operator=(const EventLoop &) = delete;

    // Has `ready` called whenever one of the poll events is there; again to change them.
    void watch(int fd, short events, Ready ready);
    void change(int fd, short events);
    void unwatch(int fd);

    uint64_t after(int milliseconds, std::function<void()> function);
    void cancel(uint64_t timer);

    // Called before each wait.
    void before_wait(std::function<void()> function) { before_wait_ = std::move(function); }

    void run();
    void stop();
    void post(std::function<void()> function);

  private:
    using Clock = std::chrono::steady_clock;
    struct Watch {
        short events;
        uint64_t serial; // tells a descriptor number from the next of the same value
        Ready ready;
    };
    struct Timer {
        Clock::time_point due;
        std::function<void()> function;
    };

    int wait_millis() const;
    void poll_once();
    void run_timers();
    void run_posted();
    void wake() const;

    int wake_fd_;
    uint64_t serial_ = 0;
    std::map<int, Watch> watches_;
    std::map<uint64_t, Timer> timers_;
    std::function<void()> before_wait_;
    std::atomic<bool> stopping_{false};
    std::mutex posted_mutex_;
    std::vector<std::function<void()>> posted_;
};
