// SPDX-License-Identifier: Apache-2.0
// What a context has behind its public part: the socket's traffic.
#pragma once

extern "C" {
#include <libubus.h>
}

#include "../wire/frame_reader.h"
#include "deadline.h"

struct ubus_connection {
    wire::FrameReader in;
    blob_buf out{};         // the request being built; sent before anything else can start another
    bool loss_told = false; // connection_lost was called

    ubus_connection() = default;
    ~ubus_connection() { blob_buf_free(&out); }
    ubus_connection(const ubus_connection &) = delete;
    ubus_connection &operator=(const ubus_connection &) = delete;
};

// Connects to the broker's socket, which may take for ever; -1 on failure, also when a signal interrupts it.
int open_bus_socket(const char *path);

// Sends the message built in connection->out. OK; INVALID_ARGUMENT when it is too long or the connection is
// gone; TIMEOUT when the broker took nothing of it in time; CONNECTION_FAILED, with the connection given up,
// when it took a part only.
int send_message(ubus_context *ctx, wire::Header header, const Deadline &deadline);

// Waits until the socket is ready for the poll events. False when the deadline is over.
bool wait_socket(const ubus_context *ctx, short events, const Deadline &deadline);

// Takes the next message that has been read. Sets sock.eof when the broker talks nonsense.
bool next_message(ubus_context *ctx, wire::Message *message);

// Reads once without waiting. Sets sock.eof when the broker has gone.
void read_socket(ubus_context *ctx);
