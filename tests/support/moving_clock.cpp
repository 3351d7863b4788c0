// SPDX-License-Identifier: Apache-2.0
#include "support/moving_clock.h"

#include <condition_variable>
#include <mutex>
#include <thread>

#include "core/clock.h"

namespace moving_clock {

namespace {

constexpr size_t PAUSES_KEPT = 100000;

std::mutex mutex;
std::condition_variable paused;
Millis now_millis = 1714550400000;
Millis steady_millis = 1000000;
std::vector<Millis> asked;
std::function<void(Millis)> hook;

void move_locked(Millis millis) {
    now_millis += millis;
    steady_millis += millis;
}

void pause(Millis millis) {
    std::function<void(Millis)> call;
    {
        std::lock_guard lock(mutex);
        move_locked(millis);
        if (asked.size() < PAUSES_KEPT) asked.push_back(millis);
        call = hook;
        paused.notify_all(); // under the lock: whoever waits may end the program, and this object, next
    }
    if (call) call(millis);
    std::this_thread::yield();
}

} // namespace

void set(time_t seconds) {
    std::lock_guard lock(mutex);
    now_millis = static_cast<Millis>(seconds) * 1000;
}

void advance(Millis millis) {
    std::lock_guard lock(mutex);
    move_locked(millis);
}

std::vector<Millis> pauses() {
    std::lock_guard lock(mutex);
    return asked;
}

void clear_pauses() {
    std::lock_guard lock(mutex);
    asked.clear();
}

bool wait_for_pauses(size_t count, std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex);
    return paused.wait_for(lock, limit, [&] { return asked.size() >= count; });
}

void on_pause(std::function<void(Millis)> new_hook) {
    std::lock_guard lock(mutex);
    hook = std::move(new_hook);
}

} // namespace moving_clock

void pause_seconds(unsigned seconds) {
    moving_clock::pause(static_cast<moving_clock::Millis>(seconds) * 1000);
}

void pause_millis(unsigned millis) {
    moving_clock::pause(millis);
}

time_t now_seconds() {
    std::lock_guard lock(moving_clock::mutex);
    return static_cast<time_t>(moving_clock::now_millis / 1000);
}

time_t monotonic_seconds() {
    std::lock_guard lock(moving_clock::mutex);
    return static_cast<time_t>(moving_clock::steady_millis / 1000);
}

struct tm local_time() {
    time_t now = now_seconds();
    struct tm local = {};
    localtime_r(&now, &local);
    return local;
}
