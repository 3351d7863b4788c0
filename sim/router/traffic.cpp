// SPDX-License-Identifier: Apache-2.0
// What goes over the line: the download speed test, and downloads of the stations.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char SPEED[] = "/vrop.speedtest/speed";
constexpr char TEST_SECONDS[] = "/sim/testseconds"; // since the speed test began
constexpr char WAN_RATE[] = "/vrop.waninfo.wanrate/rxrate_rt";
constexpr char STATIONS[] = "/vrop.laninfo";
constexpr int ANY = 0x7fffffff;

constexpr Field TEST[] = {required(text("url", 1, 255)), integer("time", -ANY - 1, ANY),
                          integer("interval", -ANY - 1, ANY)};
constexpr Field DOWNLOAD[] = {required(mac("mac")), required(integer("rate", 0, 10000))};

JsonRoot start_test(World &world, const Request &request) {
    store(world, request);
    world.state.set(TEST_SECONDS, 0);
    return result();
}

// The share of the line that a test has reached in each tenth of its time, and after it: slow start, then the
// ups and downs of a line that others use too.
int percent_reached(int seconds, int time) {
    constexpr int CURVE[] = {35, 60, 80, 92, 100, 100, 95, 99, 96, 97, 97};
    constexpr int LAST = std::size(CURVE) - 1;
    return CURVE[time <= 0 ? LAST : std::clamp(static_cast<int>(10LL * seconds / time), 0, LAST)];
}

JsonRoot show_speed(World &world, const Request &request) {
    if (!world.state.text("/vrop.speedtest/url").empty()) {
        const long long line = world.state.integer("/sim/linespeed");
        const int percent =
            percent_reached(world.state.integer(TEST_SECONDS), world.state.integer("/vrop.speedtest/time"));
        world.state.set(SPEED, std::to_string(line * percent / 100));
    }
    return show(world, request);
}

void add_rate(World &world, const std::string &place, double change) {
    char rate[32];
    snprintf(rate, sizeof rate, "%.2f", std::max(0.0, atof(world.state.text(place).c_str()) + change));
    world.state.set(place, std::string(rate));
}

JsonRoot download(World &world, const Request &request) {
    const int at = index_of_mac(world.state.find(STATIONS), text_of(request.arguments, "mac"));
    if (at < 0) throw Refused("station " + text_of(request.arguments, "mac") + " not found");
    const std::string rate = place_at(STATIONS, at) + "/rxrate";
    const double change = integer_of(request.arguments, "rate") - atof(world.state.text(rate).c_str());
    add_rate(world, rate, change);
    add_rate(world, WAN_RATE, change);
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.speedtest", "setdownload", TEST, start_test, "start a download test; its time in seconds"},
    {"vrop.speedtest",
     "getinfo",
     {},
     show_speed,
     "its speed in bytes per second, as text; /sim/linespeed is the best"},
    {"sim", "download", DOWNLOAD, download,
     "a station downloads at so many Mbit/s, which the WAN's rate shows too; 0 ends it"},
};

} // namespace

Methods traffic_methods() {
    return ROWS;
}

void elapse_speed_test(World &world, int seconds) {
    if (world.state.find(TEST_SECONDS))
        world.state.set(TEST_SECONDS, advance(world.state.integer(TEST_SECONDS), seconds));
}

} // namespace router
