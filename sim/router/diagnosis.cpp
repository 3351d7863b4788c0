// SPDX-License-Identifier: Apache-2.0
// Pings, and what the storage service says of the line.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char PING_RESULT[] = "/aptmp/pingrt";
constexpr char STORAGE_STATUS[] = "/aptmp/ecm.status";

constexpr Field PING[] = {required(text("host", 1, 255)), integer("num", 1, 100)};
constexpr Field STORAGE[] = {flag("upnp"), integer("nat_type", 0, 9), flag("connect_status")};

void write_file(const char *path, const std::string &content) {
    std::ofstream file(path, std::ios::trunc);
    if (!(file << content)) throw Refused("cannot write " + std::string(path));
}

bool is_host(const std::string &host) {
    constexpr char CHARACTERS[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-:_";
    return host[0] != '-' && host.find_first_not_of(CHARACTERS) == std::string::npos;
}

bool is_unreachable(const World &world, const std::string &host) {
    json_object *hosts = world.state.find("/sim/ping/unreachable");
    for (std::size_t i = 0; i < length_of(hosts); i++)
        if (host == json_object_get_string(element(hosts, i))) return true;
    return world.state.text("/vrop.waninfo/status") != "Connected";
}

// "8.120/9.334/12.871": the one in the middle.
std::string average(const std::string &times) {
    const std::size_t first = times.find('/');
    return first == std::string::npos ? times
                                      : times.substr(first + 1, times.find('/', first + 1) - first - 1);
}

std::string replies(const std::string &times, int received) {
    std::string lines;
    for (int sequence = 0; sequence < received; sequence++)
        lines += "64 bytes from 198.51.100.7: seq=" + std::to_string(sequence) +
                 " ttl=54 time=" + average(times) + " ms\n";
    return lines;
}

// What the ping program prints; without a reply there is no line of round-trip times.
std::string ping_output(const World &world, const std::string &host, int count) {
    const int loss =
        is_unreachable(world, host) ? 100 : std::clamp(world.state.integer("/sim/ping/loss"), 0, 100);
    const int received = count * (100 - loss) / 100;
    const std::string times = world.state.text("/sim/ping/times"); // min/avg/max
    std::string output = "PING " + host + " (198.51.100.7): 56 data bytes\n" + replies(times, received) +
                         "\n--- " + host + " ping statistics ---\n" + std::to_string(count) +
                         " packets transmitted, " + std::to_string(received) + " packets received, " +
                         std::to_string(loss) + "% packet loss\n";
    return received == 0 ? output : output + "round-trip min/avg/max = " + times + " ms\n";
}

JsonRoot ping(World &world, const Request &request) {
    const std::string host = text_of(request.arguments, "host");
    write_file(PING_RESULT, is_host(host) ? ping_output(world, host, integer_of(request.arguments, "num", 4))
                                          : "ping: bad address\n");
    return result();
}

JsonRoot write_storage_status(World &world, const Request &request) {
    store_at(world, "/sim/storage", request);
    std::string status;
    for (const Field &field : request.row.fields)
        status += std::string(field.name) + "=" +
                  world.state.text(std::string("/sim/storage/") + field.name) + "\n";
    write_file(STORAGE_STATUS, status);
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.diagnosis", "ping", PING, ping,
     "leaves what ping prints in /aptmp/pingrt; /sim/ping says what it finds, num is 4 if left out"},
    {"sim", "storage", STORAGE, write_storage_status, "the storage service writes /aptmp/ecm.status"},
};

} // namespace

Methods diagnosis_methods() {
    return ROWS;
}

} // namespace router
