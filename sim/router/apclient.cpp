// SPDX-License-Identifier: Apache-2.0
// The wireless relay: a radio as client of another access point. While one is on, it is the WAN.
#include "sim/router/wifi.h"

namespace router {
namespace {

constexpr Field CLIENT[] = {flag("enable"), ssid("ssid"), key("key"), flag("keepwifiupflag"),
                            authmode("authmode")};

JsonRoot set_client(World &world, const Request &request) {
    const std::string place = place_of(request.row);
    check_key(world, request, place, "key", "authmode");
    if (integer_after(world, request, place, "enable") && text_after(world, request, place, "ssid").empty())
        throw Refused("required parameter: 'ssid'");
    store(world, request);
    const bool first = place == "/vrop.wifi.1.apclient";
    if (world.state.integer(place + "/enable")) {
        world.state.set(first ? "/vrop.wifi.2.apclient/enable" : "/vrop.wifi.1.apclient/enable", 0);
        world.state.set("/vrop.waninfo/workmode", "APCLIENT");
        world.state.set("/vrop.waninfo/radio", first ? "2.4G" : "5G");
    } else if (world.state.text("/vrop.waninfo/workmode") == "APCLIENT") {
        world.state.set("/vrop.waninfo/workmode", "ROUTE");
    }
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.wifi.1.apclient", "get", {}, show, "relay on the 2.4 GHz radio; relay shows keepwifiupflag"},
    {"vrop.wifi.1.apclient", "set", CLIENT, set_client, "enable 1 makes workmode APCLIENT"},
    {"vrop.wifi.2.apclient", "get", {}, show, "relay on the 5 GHz radio"},
    {"vrop.wifi.2.apclient", "set", CLIENT, set_client, "enable 1 makes workmode APCLIENT"},
};

} // namespace

Methods apclient_methods() {
    return ROWS;
}

} // namespace router
