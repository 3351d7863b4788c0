// SPDX-License-Identifier: Apache-2.0
// Set-top boxes: LAN ports that are bridged to a VLAN of the provider's. One call sets one VLAN; the router
// has two, and a third one pushes out the one set longest ago.
#include "sim/router/world.h"

namespace router {
namespace {

constexpr char PLACE[] = "/vrop.iptv", LIST[] = "/vrop.iptv/cfg_list";
constexpr std::size_t MOST = 2;
constexpr std::size_t PORTS = 3;

constexpr Field IPTV[] = {flag("enable"), integer("vlanid", 0, 4094), text("ethport", 0, PORTS)};

// What the list shows of the VLAN set last.
JsonRoot entry(const World &world) {
    JsonRoot shown = new_object();
    put(shown.get(), "Enable", world.state.integer("/vrop.iptv/enable"));
    put(shown.get(), "VlanID", world.state.integer("/vrop.iptv/vlanid"));
    const std::string ports = world.state.text("/vrop.iptv/ethport");
    for (std::size_t i = 0; i < PORTS; i++)
        put(shown.get(), "Interface" + std::to_string(i + 1), i < ports.size() && ports[i] == '1' ? 1 : 0);
    return shown;
}

JsonRoot set_iptv(World &world, const Request &request) {
    const std::string ports = text_of(request.arguments, "ethport");
    if (ports.find_first_not_of("01") != std::string::npos)
        throw Refused("parameter format incorrect: 'ethport'");
    store_at(world, PLACE, request);
    const int same = index_of(world.state.find(LIST), "VlanID", world.state.integer("/vrop.iptv/vlanid"));
    if (same >= 0)
        world.state.erase(LIST + ("/" + std::to_string(same)));
    else if (length_of(world.state.find(LIST)) >= MOST)
        world.state.erase(LIST + std::string("/0"));
    world.state.set(LIST + std::string("/-"), entry(world));
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.iptv", "get", {}, show, "set-top boxes: the VLAN set last, and cfg_list with all of them"},
    {"vrop.iptv", "set", IPTV, set_iptv, "one VLAN and its LAN ports, \"101\" for the first and the third"},
};

} // namespace

Methods iptv_methods() {
    return ROWS;
}

} // namespace router
