// SPDX-License-Identifier: Apache-2.0
// Pings and the download speed test.
#include <algorithm>
#include <cstdio>
#include <fstream>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char PING_RESULT[] = "/aptmp/pingrt";
constexpr char SPEED[] = "/vrop.speedtest/speed";

constexpr Field PING[] = {required(text("host", 1, 255)), integer("num", 1, 100)};
constexpr Field DOWNLOAD[] = {required(text("url", 1, 255)), integer("time", 1, 600),
                              integer("interval", 1, 60000)};

// The summary as the ping program prints it; without a reply there is no line of round-trip times.
std::string ping_summary(const World &world, const std::string &host, int count) {
    const int loss = std::clamp(world.state.integer("/sim/ping/loss"), 0, 100);
    const int received = count * (100 - loss) / 100;
    char text[512];
    snprintf(text, sizeof text,
             "--- %s ping statistics ---\n%d packets transmitted, %d packets received, %d%% packet loss\n",
             host.c_str(), count, received, loss);
    std::string summary = text;
    const std::string times = world.state.text("/sim/ping/times"); // min/avg/max
    return loss == 100 ? summary : summary + "round-trip min/avg/max = " + times + " ms\n";
}

JsonRoot ping(World &world, const Request &request) {
    std::ofstream file(PING_RESULT, std::ios::trunc);
    if (!file) throw Refused("cannot write " + std::string(PING_RESULT));
    file << ping_summary(world, text_of(request.arguments, "host"), integer_of(request.arguments, "num", 4));
    return result();
}

JsonRoot start_download(World &world, const Request &request) {
    store(world, request);
    world.state.set(SPEED, std::string("0"));
    return result();
}

// A test that runs gets faster with each look at it, up to the speed of the line.
JsonRoot show_speed(World &world, const Request &request) {
    if (!world.state.text("/vrop.speedtest/url").empty()) {
        const int line = world.state.integer("/sim/linespeed");
        const int now = std::stoi("0" + world.state.text(SPEED));
        world.state.set(SPEED, std::to_string(std::min(line, now + std::max(1, line / 4))));
    }
    return show(world, request);
}

constexpr Method ROWS[] = {
    {"vrop.diagnosis", "ping", PING, ping,
     "leaves the summary in /aptmp/pingrt; /sim/ping says what it finds"},
    {"vrop.speedtest", "setdownload", DOWNLOAD, start_download, "start a download test"},
    {"vrop.speedtest",
     "getinfo",
     {},
     show_speed,
     "its speed in bytes per second, as text; /sim/linespeed bounds it"},
};

} // namespace

Methods diagnosis_methods() {
    return ROWS;
}

} // namespace router
