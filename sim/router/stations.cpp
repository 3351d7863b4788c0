// SPDX-License-Identifier: Apache-2.0
// The client devices: names, rates, and their coming and going.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char STATIONS[] = "/vrop.laninfo";
constexpr int RATE_LIMIT = 10'000'000;

constexpr Field STATION = required(steering(mac("mac")));
constexpr Field BY_MAC[] = {STATION};
constexpr Field SETTINGS[] = {STATION, text("devname", 0, 127), flag("limitrateswitch"),
                              integer("dsbandwidth", 0, RATE_LIMIT), integer("usbandwidth", 0, RATE_LIMIT)};

// The place of a station; "" when there is none of that MAC.
std::string place_of_station(const World &world, const std::string &mac) {
    return place_at(STATIONS, index_of_mac(world.state.find(STATIONS), mac));
}

void bound_rate(json_object *station, const char *rate, const char *limit) {
    const double bound = integer_of(station, limit) / 1000.0; // Mbit/s
    if (bound <= 0 || atof(text_of(station, rate).c_str()) <= bound) return;
    char text[32];
    snprintf(text, sizeof text, "%.2f", bound);
    put(station, rate, std::string(text));
}

// Rates as the router measures them: none while a station is away, and none above its limits.
void show_rates(json_object *station) {
    if (member(station, "active") && !integer_of(station, "active"))
        for (const char *rate : {"rxrate", "txrate"})
            put(station, rate, std::string("0.00"));
    if (!integer_of(station, "limitrateswitch")) return;
    bound_rate(station, "rxrate", "dsbandwidth");
    bound_rate(station, "txrate", "usbandwidth");
}

JsonRoot list_stations(World &world, const Request &request) {
    JsonRoot stations = world.state.view(STATIONS);
    for (std::size_t i = 0; i < length_of(stations.get()); i++)
        show_rates(element(stations.get(), i));
    return named_reply(request, std::move(stations));
}

JsonRoot get_station(World &world, const Request &request) {
    JsonRoot station = view_at(world, place_of_station(world, text_of(request.arguments, "mac")));
    if (station) show_rates(station.get());
    return reply_of_getby(request, std::move(station));
}

JsonRoot set_station_settings(World &world, const Request &request) {
    const std::string place = place_of_station(world, text_of(request.arguments, "mac"));
    if (place.empty()) throw Refused("vrop.laninfo.sta." + text_of(request.arguments, "mac") + " not found");
    store_at(world, place, request);
    return result();
}

// The SSID of a station on a radio.
std::string ssid_of(const World &world, const std::string &radio) {
    if (radio == "2.4G") return world.state.text("/vrop.wifi.1.ap/0/ssid");
    return radio == "5G" ? world.state.text("/vrop.wifi.2.ap/0/ssid") : "";
}

void add_station(World &world, const std::string &mac) {
    json_object *stations = world.state.at(STATIONS);
    const std::size_t number = 101 + length_of(stations);
    const std::string network = "192.168." + std::to_string(10 + number / 250) + ".";
    JsonRoot station = new_object();
    put(station.get(), "mac", spell_mac(mac));
    put(station.get(), "ipaddr", network + std::to_string(1 + number % 250));
    put(station.get(), "devname", std::string());
    put(station.get(), "hostname", "station-" + std::to_string(number));
    for (const char *name : {"limitrateswitch", "usbandwidth", "dsbandwidth"})
        put(station.get(), name, 0);
    for (const char *name : {"rxrate", "txrate"})
        put(station.get(), name, std::string("0.00"));
    put(station.get(), "statype", std::string("other"));
    json_object_array_add(stations, station.release());
}

constexpr Method ROWS[] = {
    {"vrop.laninfo",
     "list",
     {},
     list_stations,
     "client devices; radio 2.4G, 5G, mesh or 0 (cable); uptime in seconds; rates in Mbit/s"},
    {"vrop.laninfo.sta", "getbymac", BY_MAC, get_station, "one client device", STATIONS},
    {"vrop.laninfo.sta", "set", SETTINGS, set_station_settings, "name it, limit its rates (kbit/s)",
     STATIONS},
};

} // namespace

Methods station_methods() {
    return ROWS;
}

void set_stations(World &world, const std::string &mac, const std::string &radio, int count) {
    const uint64_t first = strtoull(spell_mac(mac).c_str(), nullptr, 16);
    for (int i = 0; i < count; i++) {
        char text[32];
        snprintf(text, sizeof text, "%012" PRIx64, (first + static_cast<unsigned>(i)) & 0xffffffffffff);
        set_station(world, text, radio);
    }
}

void set_station(World &world, const std::string &mac, const std::string &radio) {
    if (!radio.empty() && is_kept_out(world, mac)) throw Refused("station " + mac + " is kept out");
    forget_kept_out(world, mac);
    if (place_of_station(world, mac).empty()) {
        if (radio.empty()) throw Refused("station " + mac + " not found");
        add_station(world, mac);
    }
    const std::string place = place_of_station(world, mac);
    if (radio.empty()) { // a station that is away has no uptime
        world.state.set(place + "/active", 0);
        world.state.erase(place + "/uptime");
        return;
    }
    world.state.set(place + "/active", 1);
    world.state.set(place + "/uptime", 0);
    world.state.set(place + "/radio", radio);
    world.state.set(place + "/ssid", ssid_of(world, radio));
}

void rename_network(World &world, const std::string &radio, const std::string &ssid,
                    const std::string &new_ssid) {
    json_object *stations = world.state.find(STATIONS);
    for (std::size_t i = 0; i < length_of(stations); i++) {
        json_object *station = element(stations, i);
        if (text_of(station, "radio") == radio && text_of(station, "ssid") == ssid)
            put(station, "ssid", new_ssid);
    }
}

void elapse_stations(World &world, int seconds) {
    json_object *stations = world.state.find(STATIONS);
    for (std::size_t i = 0; i < length_of(stations); i++) {
        json_object *station = element(stations, i);
        if (integer_of(station, "active") && member(station, "uptime"))
            put(station, "uptime", advance(integer_of(station, "uptime"), seconds));
    }
}

} // namespace router
