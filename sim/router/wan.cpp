// SPDX-License-Identifier: Apache-2.0
// The way to the Internet.
#include <arpa/inet.h>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char WAN[] = "/vrop.waninfo";

constexpr Field SETTINGS[] = {
    choice("networktype", "BRIDGE|DHCP|PPPoE|STATIC"),
    flag("dnsenable"),
    addresses("dns", 3),
    text("pppoename", 0, 127),
    text("pppoepwd", 0, 63),
    integer("pppoemtu", 576, 1500),
    flag("pppoestaticdns"),
    address("gateway"),
    address("ipaddr"),
    address("subnetmask"),
    choice("protocoltype", "IPv4|IPv6|IPv4/IPv6"),
    choice("ipv6type", "DHCPv6|Static"),
    address6("ipv6addr"),
    address6("gateway6"),
    choice("dns6type", "DHCPv6|Static"),
    addresses("dns6", 3),
    choice("ipv6prefixOrigin", "None|PrefixDelegation|Static"),
    address6("ipv6prefix6"),
    integer("ipv6prefixlen6", 0, 128),
};

bool is_netmask(const std::string &text) {
    in_addr parsed{};
    if (inet_pton(AF_INET, text.c_str(), &parsed) != 1) return false;
    const uint32_t hosts = ~ntohl(parsed.s_addr);
    return (hosts & (hosts + 1)) == 0 && hosts != 0xffffffffU;
}

// A network type needs its own settings, new or kept.
void check_type(const World &world, const Request &request) {
    const std::string type = text_of(request.arguments, "networktype");
    if (type == "PPPoE" && text_after(world, request, WAN, "pppoename").empty())
        throw Refused("required parameter: 'pppoename'");
    if (type != "STATIC") return;
    for (const char *name : {"ipaddr", "gateway"})
        if (in_addr parsed{}; inet_pton(AF_INET, text_after(world, request, WAN, name).c_str(), &parsed) != 1)
            throw Refused("required parameter: '" + std::string(name) + "'");
    if (!is_netmask(text_after(world, request, WAN, "subnetmask")))
        throw Refused("parameter format incorrect: 'subnetmask'");
}

// The same for a static IPv6 address.
void check_type6(const World &world, const Request &request) {
    if (text_of(request.arguments, "ipv6type") != "Static") return;
    for (const char *name : {"ipv6addr", "gateway6"})
        if (text_after(world, request, WAN, name).empty())
            throw Refused("required parameter: '" + std::string(name) + "'");
}

JsonRoot set_wan_settings(World &world, const Request &request) {
    check_type(world, request);
    check_type6(world, request);
    store(world, request);
    const std::string type = text_of(request.arguments, "networktype");
    if (!type.empty()) {
        world.state.set("/vrop.waninfo/workmode", type == "BRIDGE" ? "BRIDGE" : "ROUTE");
        world.state.set("/vrop.wifi.1.apclient/enable", 0);
        world.state.set("/vrop.wifi.2.apclient/enable", 0);
    }
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.waninfo", "get", {}, show, "workmode BRIDGE, ROUTE, APCLIENT or MESH; network type; status"},
    {"vrop.waninfo", "set", SETTINGS, set_wan_settings, "BRIDGE makes workmode BRIDGE, the others ROUTE"},
    {"vrop.waninfo",
     "getwanrate",
     {},
     show,
     "present rates in Mbit/s, as text",
     "/vrop.waninfo.wanrate",
     "vrop.waninfo.wanrate"},
    {"vrop.homewebinfo", "get", {}, show, "address, uptime in seconds, cable (plugin, unplug), WAN status"},
};

} // namespace

Methods wan_methods() {
    return ROWS;
}

void set_wan(World &world, bool up) {
    if (up && world.state.text("/vrop.homewebinfo/phyStatus") == "unplug") throw Refused("the cable is out");
    world.state.set("/vrop.waninfo/status", up ? "Connected" : "Unconnected");
}

void set_cable(World &world, bool in) {
    world.state.set("/vrop.homewebinfo/phyStatus", in ? "plugin" : "unplug");
    set_wan(world, in);
}

} // namespace router
