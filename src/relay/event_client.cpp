// SPDX-License-Identifier: Apache-2.0
#include "relay/event_client.h"

#include <arpa/inet.h>
#include <cstdio>
#include <mutex>
#include <sys/socket.h>

#include "core/global_config.h"
#include "core/handles.h"
#include "core/registration.h"
#include "core/text.h"

namespace {

std::mutex client_mutex; // the socket must not be closed under a sender
Descriptor client;

} // namespace

sockaddr_in event_address() {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(EVENT_PORT);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int creat_event_client() {
    Descriptor opened(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!opened) {
        printf("socket() error\n");
        return -1;
    }
    std::lock_guard lock(client_mutex);
    client = std::move(opened);
    return 0;
}

void close_event_client() {
    std::lock_guard lock(client_mutex);
    client.reset();
}

int udp_send_data(const char *data, int length) {
    if (data == nullptr || length < 0) return 0;
    const sockaddr_in relay = event_address();
    std::lock_guard lock(client_mutex);
    sendto(client.get(), data, static_cast<size_t>(length), 0, reinterpret_cast<const sockaddr *>(&relay),
           sizeof relay);
    return 0;
}

int get_networkRestartTime_info(char *mac, int mac_length, int *delay) {
    if (mac == nullptr || mac_length < 1 || delay == nullptr) return -1;
    copy_text(mac, static_cast<size_t>(mac_length), global_config.mac);
    *delay = app_waitTime;
    return 0;
}

void send_restart_event(const char *mac, const char *interface_name, int delay) {
    send_event<128>("{\"action\": \"networkRestartTime\", \"mac\": \"%s\", \"interfaceName\": \"%s\", "
                    "\"networkDelay\": %d}",
                    mac == nullptr ? "" : mac, interface_name == nullptr ? "" : interface_name, delay);
}
