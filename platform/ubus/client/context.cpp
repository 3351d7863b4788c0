// SPDX-License-Identifier: Apache-2.0
#include "connection.h"

#include <fcntl.h>
#include <new>
#include <sys/socket.h>
#include <unistd.h>

#include "request.h"

namespace {
void end_loop_if_served(ubus_context *ctx) {
    if (ctx->sock.registered) uloop_end();
}

void on_socket_event(uloop_fd *sock, unsigned) {
    serve_socket(container_of(sock, ubus_context, sock));
}

// The broker's greeting: one message without content that gives the client its id. Like the original, waits
// for it until a signal interrupts.
bool read_hello(ubus_context *ctx) {
    char bytes[wire::SMALLEST_MESSAGE];
    if (recv(ctx->sock.fd, bytes, sizeof(bytes), MSG_WAITALL) != sizeof(bytes)) return false;
    const wire::Header header = wire::read_header(bytes);
    blob_attr body;
    memcpy(&body, bytes + wire::HEADER_BYTES, sizeof(body));
    ctx->local_id = header.peer;
    return header.version == UBUS_MSG_VERSION && header.type == UBUS_MSG_HELLO && header.peer != 0 &&
           blob_raw_len(&body) == sizeof(body);
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
    if (ctx->sock.fd >= 0 && read_hello(ctx) && fcntl(ctx->sock.fd, F_SETFL, O_NONBLOCK) == 0) return true;
    close_socket(ctx);
    return false;
}
} // namespace

ubus_context *ubus_connect(const char *path) {
    uloop_init();
    auto *ctx = new (std::nothrow) ubus_context{};
    if (!ctx) return nullptr;
    INIT_LIST_HEAD(&ctx->requests);
    ctx->sock.cb = on_socket_event;
    ctx->connection_lost = end_loop_if_served;
    if (open_socket(ctx, path)) return ctx;
    delete ctx;
    return nullptr;
}

void ubus_free(ubus_context *ctx) {
    if (!ctx) return;
    while (!list_empty(&ctx->requests))
        list_del_init(ctx->requests.next);
    close_socket(ctx);
    delete ctx;
}
