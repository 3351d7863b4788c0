// SPDX-License-Identifier: Apache-2.0
// The functions of core/clock over a clock that moves only by what is paused or advanced, so that a wait of
// hours takes no time. Link test_clock instead of qvtk_clock. Any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <vector>

namespace moving_clock {

using Millis = int64_t;

// Sets the time of day, which starts at 2024-05-01 08:00:00 UTC; the monotonic clock goes on from where it
// is.
void set(time_t seconds);
void advance(Millis millis);

// The pauses that were asked for, in order (the first 100,000).
std::vector<Millis> pauses();
void clear_pauses();
// Waits until that many pauses have been asked for; false when the limit passes first.
bool wait_for_pauses(size_t count, std::chrono::milliseconds limit = std::chrono::seconds(10));

// Called on the pausing thread, once the clock has moved and outside any lock: a place to change the world,
// or to hold a thread up. Empty for none.
void on_pause(std::function<void(Millis)> hook);

} // namespace moving_clock
