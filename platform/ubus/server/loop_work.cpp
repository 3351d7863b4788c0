// SPDX-License-Identifier: Apache-2.0
#include "loop_work.h"

#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace {

// uloop takes signals over; they stay the program's.
void init_loop() {
    constexpr int SIGNALS[] = {SIGINT, SIGTERM, SIGCHLD, SIGPIPE};
    struct sigaction before[std::size(SIGNALS)];
    for (size_t i = 0; i < std::size(SIGNALS); i++)
        sigaction(SIGNALS[i], nullptr, &before[i]);
    uloop_init();
    for (size_t i = 0; i < std::size(SIGNALS); i++)
        sigaction(SIGNALS[i], &before[i], nullptr);
}

} // namespace

WatchedFd::WatchedFd(int descriptor, std::function<void()> on_ready)
    : uloop_fd(), ready(std::move(on_ready)) {
    eof = error = registered = false;
    flags = 0;
    fd = descriptor;
    cb = [](uloop_fd *sock, unsigned) {
        const std::function<void()> function = static_cast<WatchedFd *>(sock)->ready;
        function();
    };
}

void WatchedFd::watch(bool also_write) {
    uloop_fd_add(this, ULOOP_BLOCKING | ULOOP_READ | (also_write ? ULOOP_WRITE : 0));
}

LoopWork::LoopWork(std::function<void()> after_each)
    : after_each_(std::move(after_each)), wake_fd_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (wake_fd_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    init_loop();
}

LoopWork::~LoopWork() {
    close(wake_fd_);
}

void LoopWork::run() {
    WatchedFd wake(wake_fd_, [this] { run_posted(); });
    wake.watch();
    stopping_ = false;
    while (!stopping_) // uloop also ends for others
        uloop_run();
    timers_.clear();
}

void LoopWork::stop() {
    post([this] {
        stopping_ = true;
        uloop_end();
    });
}

void LoopWork::post(std::function<void()> function) {
    std::lock_guard lock(posted_mutex_);
    posted_.push_back(std::move(function));
    const uint64_t one = 1;
    if (write(wake_fd_, &one, sizeof(one)) < 0) {
        // It is awake already.
    }
}

void LoopWork::run_posted() {
    uint64_t count;
    if (read(wake_fd_, &count, sizeof(count)) < 0) return;
    std::vector<std::function<void()>> functions;
    {
        std::lock_guard lock(posted_mutex_);
        functions.swap(posted_);
    }
    for (const auto &function : functions)
        function();
    after_each_();
}

void LoopWork::after(int milliseconds, std::function<void()> function) {
    auto timer = std::make_unique<Timer>();
    timer->cb = on_timeout;
    timer->work = this;
    timer->id = ++last_timer_;
    timer->function = std::move(function);
    uloop_timeout_set(timer.get(), milliseconds > 0 ? milliseconds : 0);
    timers_[last_timer_] = std::move(timer);
}

void LoopWork::on_timeout(uloop_timeout *timeout) {
    auto *timer = static_cast<Timer *>(timeout);
    LoopWork *work = timer->work;
    const auto own = work->timers_.extract(timer->id); // lives until its function has ended
    timer->function();
    work->after_each_();
}
