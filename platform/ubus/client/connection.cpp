// SPDX-License-Identifier: Apache-2.0
#include "connection.h"

#include <poll.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace {
bool connect_unix(int fd, const char *path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (strlen(path) >= sizeof(address.sun_path)) return false;
    memcpy(address.sun_path, path, strlen(path) + 1);
    return connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0;
}

// The unsent rest of a message.
struct Outgoing {
    char header[wire::HEADER_BYTES];
    iovec parts[2];
    msghdr message{};
    size_t left;

    Outgoing(wire::Header head, blob_attr *body) : left(sizeof(header) + blob_raw_len(body)) {
        wire::write_header(header, head);
        parts[0] = {header, sizeof(header)};
        parts[1] = {body, blob_raw_len(body)};
        message.msg_iov = parts;
        message.msg_iovlen = 2;
    }
    Outgoing(const Outgoing &) = delete;
    Outgoing &operator=(const Outgoing &) = delete;

    void sent(size_t count) {
        left -= count;
        for (iovec &part : parts) {
            size_t taken = std::min(count, part.iov_len);
            part.iov_base = static_cast<char *>(part.iov_base) + taken;
            part.iov_len -= taken;
            count -= taken;
        }
    }
};

int give_up(ubus_context *ctx, int status) {
    ctx->sock.eof = true;
    return status;
}
} // namespace

int open_bus_socket(const char *path) {
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return -1;
    if (connect_unix(fd, path)) return fd;
    close(fd);
    return -1;
}

bool wait_socket(const ubus_context *ctx, short events, const Deadline &deadline) {
    pollfd ready{ctx->sock.fd, events, 0};
    int remaining = deadline.remaining();
    return poll(&ready, 1, remaining) > 0 || !deadline.over();
}

int send_message(ubus_context *ctx, wire::Header header, const Deadline &deadline) {
    blob_attr *body = ctx->connection->out.head;
    if (ctx->sock.eof || !wire::body_length_allowed(body)) return UBUS_STATUS_INVALID_ARGUMENT;
    Outgoing rest(header, body);
    size_t whole = rest.left;
    while (rest.left > 0) {
        ssize_t count = sendmsg(ctx->sock.fd, &rest.message, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0)
            rest.sent(static_cast<size_t>(count));
        else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)
            return give_up(ctx, UBUS_STATUS_INVALID_ARGUMENT);
        else if (!wait_socket(ctx, POLLOUT, deadline))
            return rest.left == whole ? UBUS_STATUS_TIMEOUT : give_up(ctx, UBUS_STATUS_CONNECTION_FAILED);
    }
    return UBUS_STATUS_OK;
}

bool next_message(ubus_context *ctx, wire::Message *message) {
    wire::FrameReader &in = ctx->connection->in;
    if (in.next(message)) return true;
    if (in.broken()) ctx->sock.eof = true;
    return false;
}

void read_socket(ubus_context *ctx) {
    if (ctx->connection->in.fill(ctx->sock.fd) == wire::FrameReader::Read::closed) ctx->sock.eof = true;
}
