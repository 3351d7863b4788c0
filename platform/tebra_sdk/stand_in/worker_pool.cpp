// SPDX-License-Identifier: Apache-2.0
#include "worker_pool.h"

#include "core/thread.h"

#include <utility>

bool WorkerPool::push(Job job) {
    std::lock_guard lock(mutex_);
    if (jobs_.size() >= waiting_) return false;
    if (jobs_.size() >= idle_ && started_ < threads_ && start_detached(body, this) == 0) started_++;
    if (started_ == 0) return false;
    jobs_.push_back(std::move(job));
    wake_.notify_one();
    return true;
}

void *WorkerPool::body(void *pool) {
    static_cast<WorkerPool *>(pool)->work();
    return nullptr;
}

void WorkerPool::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        idle_++;
        wake_.wait(lock, [this] { return !jobs_.empty(); });
        idle_--;
        Job job = std::move(jobs_.front());
        jobs_.pop_front();
        lock.unlock();
        job();
        job = nullptr; // what the job holds is released before the lock is taken again
        lock.lock();
    }
}
