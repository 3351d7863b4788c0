// SPDX-License-Identifier: Apache-2.0
// A broker that does what a test says: greets, then plays a script on the raw connection, then closes.
#pragma once

#include <functional>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>

#include "captured.h"
#include "src/core/handles.h"
#include "support/bus_client.h"

inline constexpr char BUS_PATH[] = "/tmp/bus.sock";

// A stream socket after bind() or connect().
inline Descriptor unix_stream(const char *path, int (*attach)(int, const sockaddr *, socklen_t)) {
    sockaddr_un address{AF_UNIX, {}};
    std::string(path).copy(address.sun_path, sizeof(address.sun_path) - 1);
    Descriptor stream(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(attach(stream.get(), reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
    return stream;
}

// The raw end of a connection.
class Wire {
  public:
    explicit Wire(Descriptor stream) : stream_(std::move(stream)) {
        timeval patience{10, 0}; // for what should come at once
        setsockopt(stream_.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    }
    void send(const std::string &bytes) const {
        ::send(stream_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    // So many bytes; fewer when the other end closed or nothing came.
    std::string receive(size_t length) const {
        std::string bytes(length, '\0');
        ssize_t count = recv(stream_.get(), bytes.data(), length, MSG_WAITALL);
        bytes.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
        return bytes;
    }
    // The next whole message.
    std::string receive_message() const {
        std::string head = receive(12);
        if (head.size() < 12) return head;
        size_t rest = blob_len(reinterpret_cast<blob_attr *>(&head[8]));
        return rest > 0 ? head + receive(rest) : head; // recv() of nothing would wait for something
    }
    // Says that no more is sent.
    void finish() const { shutdown(stream_.get(), SHUT_WR); }
    // Takes what comes until the other end closes.
    void drain() const {
        char chunk[4096];
        while (recv(stream_.get(), chunk, sizeof(chunk), 0) > 0) {
        }
    }

  private:
    Descriptor stream_;
};

class ScriptedPeer {
  public:
    using Script = std::function<void(const Wire &)>;

    explicit ScriptedPeer(Script script, const std::string &greeting = captured::HELLO) {
        unlink(BUS_PATH);
        listener_ = unix_stream(BUS_PATH, bind);
        EXPECT_EQ(listen(listener_.get(), 4), 0);
        thread_ = std::jthread([this, greeting, play = std::move(script)] {
            Wire wire(Descriptor(accept(listener_.get(), nullptr, nullptr)));
            wire.send(greeting);
            play(wire);
        });
    }

  private:
    Descriptor listener_;
    std::jthread thread_;
};
