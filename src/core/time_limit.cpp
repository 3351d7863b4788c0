// SPDX-License-Identifier: Apache-2.0
#include "core/time_limit.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <sys/socket.h>
#include <unistd.h>

#ifndef sigev_notify_thread_id // the older C libraries have the field only
#define sigev_notify_thread_id _sigev_un._tid
#endif

namespace {

constexpr long NANOSECONDS_PER_MILLI = 1000000;
constexpr time_t REPEAT_SECONDS = 1; // a signal that comes between two system calls interrupts neither

// Of the thread that the signal is sent to.
thread_local volatile sig_atomic_t limited_socket = -1;
thread_local volatile sig_atomic_t time_is_over = 0;

void end_wait(int) {
    const int error = errno;
    time_is_over = 1;
    if (limited_socket >= 0) shutdown(limited_socket, SHUT_RDWR);
    errno = error;
}

// Lets the signal through to this thread, and interrupt what it does.
void await_signal() {
    struct sigaction action = {};
    action.sa_handler = end_wait; // without SA_RESTART
    sigemptyset(&action.sa_mask);
    sigaction(SIGRTMIN, &action, nullptr);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, SIGRTMIN);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
}

// A thread's timer, made for its first limit: to set one is much cheaper than to make one.
class Timer {
  public:
    Timer() {
        await_signal();
        sigevent event = {};
        event.sigev_notify = SIGEV_THREAD_ID;
        event.sigev_signo = SIGRTMIN;
        event.sigev_notify_thread_id = gettid();
        made_ = timer_create(CLOCK_MONOTONIC, &event, &timer_) == 0;
    }
    ~Timer() {
        if (made_) timer_delete(timer_);
    }
    Timer(const Timer &) = delete;
    Timer &operator=(const Timer &) = delete;

    void set(const itimerspec &time) const {
        if (made_) timer_settime(timer_, 0, &time, nullptr);
    }

  private:
    bool made_;
    timer_t timer_ = {};
};
thread_local const Timer timer;

} // namespace

TimeLimit::TimeLimit(int socket, unsigned millis) {
    time_is_over = 0;
    limited_socket = socket;
    timer.set(
        {{REPEAT_SECONDS, 0},
         {static_cast<time_t>(millis / 1000), static_cast<long>(millis % 1000) * NANOSECONDS_PER_MILLI}});
}

TimeLimit::~TimeLimit() {
    limited_socket = -1;
    timer.set({});
}

bool TimeLimit::over() {
    return time_is_over != 0;
}
