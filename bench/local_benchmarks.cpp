// SPDX-License-Identifier: Apache-2.0
// The relay and the log.
#include <arpa/inet.h>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "benchmarks.h"
#include "core/files.h"
#include "core/handles.h"
#include "core/log.h"
#include "quiet_sdk.h"
#include "relay/event_client.h"
#include "relay/relay.h"

namespace bench {

namespace {

constexpr const char *DATAGRAMS[] = {
    R"({"action":"deviceConnect","mac":"02A0C9000001","devName":"Desk PC","time":1714550400})",
    R"({"action":"networkRestartTime","mac":"02:A0:C9:00:00:01","interfaceName":"wan","networkDelay":30})",
    R"({"action":"upgradeProgress","progress":50})",
    R"({"action":"deviceUpgrade","mac":"02A0C9000001","msg":"ok","result":0})",
    R"({"action":"cfgReportProgress","mac":"02A0C9000001","result":1})",
    R"({"action":"outFormatFeedback","result":0})",
};
constexpr int ROUNDS = 16; // of all, in one turn; the socket holds as many
constexpr long DATAGRAMS_IN_TURN = ROUNDS * static_cast<long>(std::size(DATAGRAMS));
constexpr uint16_t BARE_PORT = EVENT_PORT + 1;

bool send_all(uint16_t port) {
    const Descriptor sender(socket(AF_INET, SOCK_DGRAM, 0));
    sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    for (int round = 0; round < ROUNDS; round++)
        for (const char *text : DATAGRAMS)
            if (sendto(sender.get(), text, strlen(text), 0, reinterpret_cast<sockaddr *>(&to), sizeof to) < 0)
                return false;
    return true;
}

Descriptor bare_server() {
    Descriptor server(socket(AF_INET, SOCK_DGRAM, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(BARE_PORT);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(server.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) server.reset();
    return server;
}

bool receive_and_parse(int server) {
    char text[EVENT_MAX + 1];
    for (long i = 0; i < DATAGRAMS_IN_TURN; i++) {
        const ssize_t length = recvfrom(server, text, EVENT_MAX, 0, nullptr, nullptr);
        if (length < 0) return false;
        text[length] = '\0';
        if (!JsonRoot(json_tokener_parse(text))) return false;
    }
    return true;
}

void relay(benchmark::State &state) {
    std::atomic<int> running;
    const Prepared agent = {[&] {
                                running = 1;
                                clear_after_events(DATAGRAMS_IN_TURN, &running);
                                return creat_event_server() == 0 && send_all(EVENT_PORT);
                            },
                            [&] {
                                eventudp_server(&running);
                                return true;
                            }};
    const Descriptor server = bare_server();
    const Prepared bare = {[] { return send_all(BARE_PORT); },
                           [&] { return receive_and_parse(server.get()); }};
    compare(state, {.with = "receive, parse", .unit = "datagram", .amount = DATAGRAMS_IN_TURN}, agent, bare);
}

bool append_bare(const char *line) {
    const Descriptor file(open("/apvar/log/bare.log", O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600));
    return write_all(file.get(), line, strlen(line));
}

bool append_logged() {
    LOG("otaCheckInterval:%d, minInterval:%d, maxInterval:%d", 3600, 60, 86400);
    return true;
}

void log_line(benchmark::State &state) {
    compare(state, {.with = "open, write, close"}, append_logged, [] {
        return append_bare("[2024-05-01 08:00:00][append_logged][97]otaCheckInterval:3600, minInterval:60, "
                           "maxInterval:86400\n");
    });
    if (truncate("/apvar/log/bare.log", 0) != 0) state.SkipWithError("its log cannot be emptied");
}

} // namespace

void add_relay() {
    benchmark::RegisterBenchmark("relay", relay)->UseManualTime();
}

void add_log() {
    benchmark::RegisterBenchmark("one log line", log_line)->UseManualTime();
}

} // namespace bench
