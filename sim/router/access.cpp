// SPDX-License-Identifier: Apache-2.0
// Who is let into the router's networks. A station that is no longer let in goes away at once; when it is let
// in again, it comes back by itself to where it was.
#include <vector>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char STATIONS[] = "/vrop.laninfo";
constexpr char KEPT_OUT[] = "/sim/keptout"; // MAC: the radio that it comes back to

struct Return {
    std::string mac, radio;
};

std::vector<Return> take_released(World &world) {
    std::vector<Return> released;
    json_object *kept_out = world.state.find(KEPT_OUT);
    if (!json_object_is_type(kept_out, json_type_object)) return released;
    json_object_object_foreach(kept_out, mac, radio) if (!is_kept_out(world, mac))
        released.push_back({mac, json_object_get_string(radio)});
    for (const Return &station : released)
        json_object_object_del(kept_out, station.mac.c_str());
    return released;
}

void send_away(World &world, json_object *station) {
    const std::string mac = text_of(station, "mac"), radio = text_of(station, "radio");
    set_station(world, mac, "");
    world.state.set(std::string(KEPT_OUT) + "/" + mac, radio);
}

} // namespace

bool is_kept_out(const World &world, const std::string &mac) {
    return is_filtered(world, mac) || is_disconnected(world, mac) || is_out_of_hours(world, mac);
}

void enforce_access(World &world) {
    json_object *stations = world.state.find(STATIONS);
    for (std::size_t i = 0; i < length_of(stations); i++) {
        json_object *station = element(stations, i);
        if (integer_of(station, "active") && is_kept_out(world, text_of(station, "mac")))
            send_away(world, station);
    }
    for (const Return &station : take_released(world))
        set_station(world, station.mac, station.radio);
}

void forget_kept_out(World &world, const std::string &mac) {
    json_object *kept_out = world.state.find(KEPT_OUT);
    if (json_object_is_type(kept_out, json_type_object))
        json_object_object_del(kept_out, spell_mac(mac).c_str());
}

} // namespace router
