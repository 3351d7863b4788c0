// SPDX-License-Identifier: Apache-2.0
// A benchmark of two things: what the agent does, and the bare work that it cannot do without. Both are timed
// in turns, so that whatever else the machine does meets them alike.
#pragma once

#include <functional>

#include <benchmark/benchmark.h>

namespace bench {

struct Comparison {
    const char *with; // what the bare work is, for people
    // What one turn comes to: "call", or what `amount` counts ("byte", "datagram"). bench/run.py knows how
    // to write each.
    const char *unit = "call";
    double amount = 1;
    double goal = 0; // the agent's time may be this many times the bare one's; 0: whatever it is
};

// A turn of the agent's or of the bare work. Anything but true ends the benchmark with an error.
using Turn = std::function<bool()>;

// Runs the benchmark. Leaves the counters "measured" and "bare" (the median turn, in seconds), "ratio",
// "amount" and "goal", and the label "UNIT WITH".
void compare(benchmark::State &state, const Comparison &comparison, const Turn &measured, const Turn &bare);

// The same when each turn has to be prepared, which is not timed.
struct Prepared {
    Turn prepare, run;
};
void compare(benchmark::State &state, const Comparison &comparison, const Prepared &measured,
             const Prepared &bare);

} // namespace bench
