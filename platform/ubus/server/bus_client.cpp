// SPDX-License-Identifier: Apache-2.0
#include "bus_client.h"

#include <unistd.h>

BusClient::BusClient(int fd, uint32_t id) : fd_(fd) {
    MessageBuilder empty;
    send({UBUS_MSG_VERSION, UBUS_MSG_HELLO, 0, id}, empty.body());
    flush(); // in one piece: clients read it with one read
}

BusClient::~BusClient() {
    close(fd_);
}

bool BusClient::send(const wire::Header &header, const blob_attr *body) {
    if (!wire::body_length_allowed(body)) return false;
    if (out_.size() > UNREAD_LIMIT) return true;
    char bytes[wire::HEADER_BYTES];
    wire::write_header(bytes, header);
    out_.append(bytes, sizeof(bytes));
    out_.append(reinterpret_cast<const char *>(body), blob_raw_len(body));
    return true;
}

bool BusClient::flush() {
    while (!out_.empty()) {
        ssize_t count = ::send(fd_, out_.data(), out_.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0) return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
        out_.erase(0, static_cast<size_t>(count));
    }
    return true;
}
