// SPDX-License-Identifier: Apache-2.0
// The guests' main switch and how long it stays on.
#include <algorithm>

#include "sim/router/wifi.h"

namespace router {
namespace {

constexpr int SECONDS_PER_HOUR = 3600;
constexpr char LEFT[] = "/sim/guestseconds"; // until the guest networks close; 0: they stay open

constexpr Field CONTROL[] = {flag("controlenable"), integer("keeptime", 0, 8760), NOT_YET};

JsonRoot set_control(World &world, const Request &request) {
    store(world, request);
    const bool on = world.state.integer("/vrop.wifi.guestwificontrol/controlenable") != 0;
    const int hours = world.state.integer("/vrop.wifi.guestwificontrol/keeptime");
    world.state.set(LEFT, on ? hours * SECONDS_PER_HOUR : 0);
    return result();
}

void close_guest_networks(World &world) {
    world.state.set("/vrop.wifi.guestwificontrol/controlenable", 0);
    for (std::string list : {"/vrop.wifi.1.ap", "/vrop.wifi.2.ap"}) {
        int at = index_of(world.state.find(list), "index", 2);
        if (at < 0) continue;
        const std::string place = list + "/" + std::to_string(at);
        world.state.set(place + "/enable", 0);
        world.state.set(place + "/hide", 1);
    }
}

constexpr Method ROWS[] = {
    {"vrop.wifi.guestwificontrol", "get", {}, show, "guests' main switch; keeptime in hours, 0 for ever"},
    {"vrop.wifi.guestwificontrol", "set", CONTROL, set_control,
     "when keeptime is over, both guest networks close"},
};

} // namespace

Methods guest_methods() {
    return ROWS;
}

void elapse_guests(World &world, int seconds) {
    const int left = world.state.integer(LEFT);
    if (left <= 0) return;
    world.state.set(LEFT, std::max(0, left - seconds));
    if (left <= seconds) close_guest_networks(world);
}

} // namespace router
