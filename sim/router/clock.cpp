// SPDX-License-Identifier: Apache-2.0
// The router's clock. It starts on a Wednesday at 08:00; the router's time zone is UTC.
#include <algorithm>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char TIME[] = "/sim/time"; // seconds since the epoch
constexpr int DAY = 86400;
constexpr int FIRST_DAY = 4; // of the epoch: a Thursday

} // namespace

WallTime wall_time(const World &world) {
    return wall_time(world.state.integer(TIME));
}

WallTime wall_time(int seconds) {
    return {.weekday = (seconds / DAY + FIRST_DAY) % 7, .second = seconds % DAY};
}

void elapse_clock(World &world, int seconds) {
    const int from = world.state.integer(TIME);
    world.state.set(TIME, from + std::min(seconds, 0x7fffffff - from));
    carry_out_tasks(world, from, world.state.integer(TIME));
}

} // namespace router
