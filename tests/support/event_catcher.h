// SPDX-License-Identifier: Apache-2.0
// The relay's end of the local events.
#pragma once

#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <vector>

#include <gtest/gtest.h>

#include "core/handles.h"
#include "relay/event_client.h"

// A socket at the relay's port of a local address.
inline Descriptor take_event_port(in_addr_t local = INADDR_LOOPBACK) {
    Descriptor taken(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0));
    const sockaddr_in address = {AF_INET, htons(EVENT_PORT), {htonl(local)}, {}};
    EXPECT_EQ(bind(taken.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    return taken;
}

class EventCatcher {
  public:
    // Every datagram is to fill `size` bytes, with zeros behind the text.
    explicit EventCatcher(size_t size) : size_(size) { creat_event_client(); }
    // The texts that came since the last call; datagrams on loopback are there as soon as they are sent.
    std::vector<std::string> take() {
        std::vector<std::string> texts;
        char datagram[EVENT_MAX + 1] = {};
        for (ssize_t got; (got = recv(socket_.get(), datagram, EVENT_MAX, 0)) >= 0;) {
            texts.push_back(datagram);
            std::string padded = texts.back();
            padded.resize(size_, '\0');
            EXPECT_EQ(std::string(datagram, static_cast<size_t>(got)), padded);
        }
        return texts;
    }

  private:
    size_t size_;
    Descriptor socket_ = take_event_port();
};
