// SPDX-License-Identifier: Apache-2.0
#include "relay/relay.h"

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "core/handles.h"
#include "core/log.h"
#include "relay/event_client.h"

namespace {

Descriptor server;

// Receives the next datagram and terminates its text; the process cannot go on without the relay's socket.
int receive(char (&text)[EVENT_MAX + 1]) {
    ssize_t length = 0;
    do {
        length = recvfrom(server.get(), text, EVENT_MAX, 0, nullptr, nullptr);
    } while (length < 0 && errno == EINTR);
    if (length < 0) {
        perror("eventudp_server recvfrom() error.\n");
        server.reset();
        fflush(stdout);
        _exit(1); // not exit(): the other threads still use what that would destroy
    }
    text[length] = '\0';
    return static_cast<int>(length);
}

} // namespace

int creat_event_server() {
    Descriptor opened(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!opened) {
        perror("Creating eventudp_server socket failed.\n");
        return -1;
    }
    const sockaddr_in address = event_address();
    if (bind(opened.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        perror("eventudp_server Bind() error.\n");
        return -1;
    }
    server = std::move(opened);
    return 0;
}

void *eventudp_server(void *run_flag) {
    const auto *running = static_cast<const std::atomic<int> *>(run_flag);
    char text[EVENT_MAX + 1] = {};
    while (*running != 0) {
        int length = receive(text);
        if (length == 0) continue;
        LOG("qvtk eventupd server receive msg:%s\n", text);
        handle_qvtk_event(text, length);
    }
    server.reset();
    LOG("eventudp_server will exit!");
    return nullptr;
}
