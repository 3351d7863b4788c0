// SPDX-License-Identifier: Apache-2.0
// A server at localhost that does whatever a test says, raw.
#pragma once

#include <functional>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>

#include <gtest/gtest.h>

#include "core/handles.h"

class LoopbackServer {
  public:
    // Calls `answer` with the descriptor of every connection, one after the other, on a thread of its own,
    // and then takes what is left to read, since unread bytes would reset the connection.
    explicit LoopbackServer(std::function<void(int peer)> answer) {
        sockaddr_in address = {AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        socklen_t length = sizeof address;
        auto *any = reinterpret_cast<sockaddr *>(&address);
        EXPECT_TRUE(bind(socket_.get(), any, length) == 0 && listen(socket_.get(), 8) == 0);
        getsockname(socket_.get(), any, &length);
        place_ = "://localhost:" + std::to_string(ntohs(address.sin_port)) + "/file";
        thread_ = std::jthread([this, answer = std::move(answer)] {
            for (Descriptor peer; (peer = Descriptor(accept(socket_.get(), nullptr, nullptr)));) {
                answer(peer.get());
                shutdown(peer.get(), SHUT_WR);
                char rest[1024];
                while (recv(peer.get(), rest, sizeof rest, 0) > 0) {
                }
            }
        });
    }
    ~LoopbackServer() { shutdown(socket_.get(), SHUT_RDWR); }
    std::string url(const std::string &scheme) const { return scheme + place_; }

  private:
    Descriptor socket_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::string place_;
    std::jthread thread_;
};
