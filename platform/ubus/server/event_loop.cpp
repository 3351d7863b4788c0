// SPDX-License-Identifier: Apache-2.0
#include "event_loop.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

EventLoop::EventLoop() : wake_fd_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (wake_fd_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

EventLoop::~EventLoop() {
    close(wake_fd_);
}

void EventLoop::watch(int fd, short events, Ready ready) {
    watches_[fd] = {events, ++serial_, std::move(ready)};
}

void EventLoop::change(int fd, short events) {
    auto at = watches_.find(fd);
    if (at != watches_.end()) at->second.events = events;
}

void EventLoop::unwatch(int fd) {
    watches_.erase(fd);
}

uint64_t EventLoop::after(int milliseconds, std::function<void()> function) {
    auto due = Clock::now() + std::chrono::milliseconds(std::max(milliseconds, 0));
    timers_[++serial_] = {due, std::move(function)};
    return serial_;
}

void EventLoop::cancel(uint64_t timer) {
    timers_.erase(timer);
}

void EventLoop::wake() const {
    uint64_t one = 1;
    if (write(wake_fd_, &one, sizeof(one)) < 0) {
        // It is awake already.
    }
}

void EventLoop::stop() {
    stopping_ = true;
    wake();
}

void EventLoop::post(std::function<void()> function) {
    {
        std::lock_guard lock(posted_mutex_);
        posted_.push_back(std::move(function));
    }
    wake();
}

void EventLoop::run_posted() {
    std::vector<std::function<void()>> functions;
    {
        std::lock_guard lock(posted_mutex_);
        functions.swap(posted_);
    }
    for (const auto &function : functions)
        function();
}

// Timers that are due, in the order of their time; what they set anew waits for the next turn.
void EventLoop::run_timers() {
    auto now = Clock::now();
    std::vector<std::pair<Clock::time_point, uint64_t>> due;
    for (const auto &[id, timer] : timers_)
        if (timer.due <= now) due.emplace_back(timer.due, id);
    std::sort(due.begin(), due.end());
    for (const auto &[time, id] : due) {
        auto node = timers_.extract(id);
        if (node) node.mapped().function();
    }
}

int EventLoop::wait_millis() const {
    if (timers_.empty()) return -1;
    auto first = std::min_element(timers_.begin(), timers_.end(),
                                  [](const auto &a, const auto &b) { return a.second.due < b.second.due; });
    auto left = std::chrono::ceil<std::chrono::milliseconds>(first->second.due - Clock::now()).count();
    return static_cast<int>(std::clamp<int64_t>(left, 0, INT_MAX));
}

void EventLoop::poll_once() {
    std::vector<pollfd> fds{{wake_fd_, POLLIN, 0}};
    std::vector<uint64_t> serials{0};
    for (const auto &[fd, watch] : watches_) {
        fds.push_back({fd, watch.events, 0});
        serials.push_back(watch.serial);
    }
    if (poll(fds.data(), fds.size(), wait_millis()) <= 0) return;
    uint64_t count;
    if (fds[0].revents && read(wake_fd_, &count, sizeof(count)) < 0) {
        // Nothing to take.
    }
    for (size_t i = 1; i < fds.size(); i++) {
        auto at = watches_.find(fds[i].fd);
        if (!fds[i].revents || at == watches_.end() || at->second.serial != serials[i]) continue;
        Ready ready = at->second.ready; // it may remove itself
        ready(fds[i].revents);
    }
}

void EventLoop::run() {
    while (!stopping_.exchange(false)) {
        run_posted();
        run_timers();
        if (before_wait_) before_wait_();
        poll_once();
    }
    if (before_wait_) before_wait_();
}
