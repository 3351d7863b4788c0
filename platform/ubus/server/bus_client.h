// SPDX-License-Identifier: Apache-2.0
// The broker's end of one connection.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "../wire/frame_reader.h"

// A message under construction.
class MessageBuilder {
  public:
    explicit MessageBuilder() { blob_buf_init(&buffer_, 0); }
    ~MessageBuilder() { blob_buf_free(&buffer_); }
    MessageBuilder(const MessageBuilder &) = delete;
    MessageBuilder &operator=(const MessageBuilder &) = delete;

    MessageBuilder &number(ubus_msg_attr attribute, uint32_t value) {
        blob_put_u32(&buffer_, attribute, value);
        return *this;
    }
    MessageBuilder &text(ubus_msg_attr attribute, const std::string &value) {
        blob_put_string(&buffer_, attribute, value.c_str());
        return *this;
    }
    blob_buf *buffer() { return &buffer_; }
    const blob_attr *body() const { return buffer_.head; }

  private:
    blob_buf buffer_{};
};

class BusClient {
  public:
    // Takes the descriptor over and greets.
    BusClient(int fd, uint32_t id);
    ~BusClient();
    BusClient(const BusClient &) = delete;
    BusClient &operator=(const BusClient &) = delete;

    int fd() const { return fd_; }

    // Queues a message. False when it is too long; also dropped when too much is unread already.
    bool send(const wire::Header &header, const blob_attr *body);
    // Writes what the socket takes. False when the client has gone.
    bool flush();
    bool pending() const { return !out_.empty(); }

    // Reads once. False when the client has gone.
    bool read() { return in_.fill(fd_) != wire::FrameReader::Read::closed; }
    bool next(wire::Message *message) { return in_.next(message); }
    bool broken() const { return in_.broken(); }

  private:
    static constexpr size_t UNREAD_LIMIT = 1048576;

    int fd_;
    wire::FrameReader in_;
    std::string out_;
};
