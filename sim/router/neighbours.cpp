// SPDX-License-Identifier: Apache-2.0
// What the radios hear around them: other networks, and the other nodes of the mesh.
#include "sim/router/world.h"

namespace router {
namespace {

constexpr char NEIGHBOURS_2G[] = "/sim/neighbours/0", NEIGHBOURS_5G[] = "/sim/neighbours/1",
               NODES[] = "/sim/meshnodes";

JsonRoot show_nodes(World &world, const Request &request) {
    if (!world.state.integer("/vrop.mesh/enable")) throw Refused("mesh is off");
    return show(world, request);
}

constexpr Method ROWS[] = {
    {"vrop.wifi.1", "scan", {}, show, "networks around: ssid, bssid, channel, rssi, authmode", NEIGHBOURS_2G},
    {"vrop.wifi.2", "scan", {}, show, "the same at 5 GHz", NEIGHBOURS_5G},
    {"vrop.mesh",
     "topology",
     {},
     show_nodes,
     "nodes: mac, name, ip, role, parent, link wired, 2.4G or 5G, rssi, stations; refused while mesh is off",
     NODES},
};

} // namespace

Methods neighbour_methods() {
    return ROWS;
}

} // namespace router
