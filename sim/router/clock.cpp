// SPDX-License-Identifier: Apache-2.0
// The router's clock. It starts on a Wednesday at 08:00; the router's time zone is UTC.
#include <algorithm>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char TIME[] = "/sim/time"; // seconds since the epoch
constexpr int DAY = 86400;
constexpr int FIRST_DAY = 4; // of the epoch: a Thursday

int now(const World &world) {
    return std::max(0, world.state.integer(TIME));
}

} // namespace

WallTime wall_time(const World &world) {
    return wall_time(now(world));
}

WallTime wall_time(int seconds) {
    return {.weekday = (seconds / DAY + FIRST_DAY) % 7, .second = seconds % DAY};
}

void elapse_clock(World &world, int seconds) {
    const int from = now(world);
    world.state.set(TIME, advance(from, seconds));
    carry_out_tasks(world, from, now(world));
}

} // namespace router
