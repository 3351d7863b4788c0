// SPDX-License-Identifier: Apache-2.0
// A few threads that work off a bounded queue. A thread is started when work waits and none is free, and
// stays.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

class WorkerPool {
  public:
    using Job = std::function<void()>;

    // At most `threads` threads, and at most `waiting` jobs that none of them has taken yet.
    WorkerPool(size_t threads, size_t waiting) : threads_(threads), waiting_(waiting) {}

    // Any thread. False, and the job is not run, when the queue is full or no thread can be had.
    bool push(Job job);

  private:
    static void *body(void *pool);
    void work();

    const size_t threads_;
    const size_t waiting_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Job> jobs_;
    size_t started_ = 0;
    size_t idle_ = 0;
};
