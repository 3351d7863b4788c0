// SPDX-License-Identifier: Apache-2.0
// Sends local events to the relay, as JSON datagrams to 127.0.0.1 port 9589. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <netinet/in.h>

#include "core/text.h"

inline constexpr uint16_t EVENT_PORT = 9589;
inline constexpr size_t EVENT_MAX = 1024; // bytes in one datagram

// Where the relay listens.
sockaddr_in event_address();

// Opens the sending socket, which stays the process's. 0, or -1 after a console message.
int creat_event_client();
// Closes it: nothing can be sent any more. The device is about to restart.
void close_event_client();

// Sends `length` bytes; whether they arrive is not known. Returns 0.
int udp_send_data(const char *data, int length);

// The MAC of global_config and app_waitTime as the seconds that a network restart takes. 0, or -1 for a null
// argument or a length below 1.
int get_networkRestartTime_info(char *mac, int mac_length, int *delay);

// Sends an event as a datagram of N bytes, its text cut to N - 1 characters and zeros behind it. Gives the
// datagram. What the text quotes must be quoted already.
template <size_t N>
__attribute__((format(printf, 1, 2))) Text<N> send_event(const char *format, ...) {
    Text<N> datagram = {};
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(datagram.text, N, format, arguments);
    va_end(arguments);
    udp_send_data(datagram.text, N);
    return datagram;
}

// Sends the "networkRestartTime" event, as a datagram of 128 bytes.
void send_restart_event(const char *mac, const char *interface_name, int delay);
