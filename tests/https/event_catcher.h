// SPDX-License-Identifier: Apache-2.0
// The relay's end of the local events.
#pragma once

#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <vector>

#include <gtest/gtest.h>

#include "cloud/event_client.h"
#include "core/handles.h"

class EventCatcher {
  public:
    // Every datagram is to fill `size` bytes, with zeros behind the text.
    explicit EventCatcher(size_t size)
        : size_(size), socket_(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(EVENT_PORT);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(bind(socket_.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        creat_event_client();
    }
    // The texts that came since the last call; datagrams on loopback are there as soon as they are sent.
    std::vector<std::string> take() {
        std::vector<std::string> texts;
        char datagram[EVENT_MAX];
        for (ssize_t got; (got = recv(socket_.get(), datagram, sizeof datagram, 0)) >= 0;) {
            std::string bytes(datagram, static_cast<size_t>(got));
            EXPECT_EQ(bytes.size(), size_);
            texts.push_back(bytes.c_str());
            EXPECT_EQ(bytes.find_first_not_of('\0', texts.back().size()), std::string::npos);
        }
        return texts;
    }

  private:
    size_t size_;
    Descriptor socket_;
};
