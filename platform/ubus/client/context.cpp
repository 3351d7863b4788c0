// SPDX-License-Identifier: Apache-2.0
#include "connection.h"

#include <fcntl.h>
#include <new>
#include <poll.h>
#include <unistd.h>

#include "request.h"

namespace {
void end_loop_if_served(ubus_context *ctx) {
    if (ctx->sock.registered) uloop_end();
}

void on_socket_event(uloop_fd *sock, unsigned) {
    serve_socket(container_of(sock, ubus_context, sock));
}

// The broker's greeting: one message that gives the client its id.
bool read_hello(ubus_context *ctx) {
    Deadline deadline(HELLO_TIMEOUT_MILLIS);
    wire::Message hello;
    while (!next_message(ctx, &hello)) {
        if (ctx->sock.eof || !wait_socket(ctx, POLLIN, deadline)) return false;
        read_socket(ctx);
    }
    ctx->local_id = hello.header.peer;
    return hello.header.version == UBUS_MSG_VERSION && hello.header.type == UBUS_MSG_HELLO &&
           ctx->local_id != 0;
}

void close_socket(ubus_context *ctx) {
    if (ctx->sock.registered) uloop_fd_delete(&ctx->sock);
    if (ctx->sock.fd >= 0) close(ctx->sock.fd);
    ctx->sock.fd = -1;
    ctx->sock.eof = true;
    delete ctx->connection;
    ctx->connection = nullptr;
}

bool open_socket(ubus_context *ctx, const char *path) {
    ctx->connection = new (std::nothrow) ubus_connection;
    ctx->sock.fd = ctx->connection ? open_bus_socket(path ? path : UBUS_UNIX_SOCKET) : -1;
    ctx->sock.eof = ctx->sock.error = false;
    if (ctx->sock.fd >= 0 && fcntl(ctx->sock.fd, F_SETFL, O_NONBLOCK) == 0 && read_hello(ctx)) return true;
    close_socket(ctx);
    return false;
}
} // namespace

int ubus_connect_ctx(ubus_context *ctx, const char *path) {
    uloop_init();
    *ctx = {};
    INIT_LIST_HEAD(&ctx->requests);
    ctx->sock.cb = on_socket_event;
    ctx->connection_lost = end_loop_if_served;
    return open_socket(ctx, path) ? 0 : -1;
}

void ubus_shutdown(ubus_context *ctx) {
    while (!list_empty(&ctx->requests))
        list_del_init(ctx->requests.next);
    close_socket(ctx);
}

ubus_context *ubus_connect(const char *path) {
    auto *ctx = new (std::nothrow) ubus_context;
    if (ctx && ubus_connect_ctx(ctx, path) == 0) return ctx;
    delete ctx;
    return nullptr;
}

void ubus_free(ubus_context *ctx) {
    if (!ctx) return;
    ubus_shutdown(ctx);
    delete ctx;
}
