// SPDX-License-Identifier: Apache-2.0
// A broker that does what a test says: greets, then plays a script on the raw connection, then closes.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "bytes.h"
#include "captured.h"

inline constexpr char PEER_SOCKET[] = "/tmp/peer.sock";
inline constexpr int PATIENCE_MILLIS = 10000; // for what should come at once

// The raw end of a connection.
class Wire {
  public:
    explicit Wire(int fd) : fd_(fd) {}
    ~Wire() { close(fd_); }
    Wire(const Wire &) = delete;
    Wire &operator=(const Wire &) = delete;

    int fd() const { return fd_; }
    void send(const std::string &bytes) const {
        size_t done = 0;
        while (done < bytes.size()) {
            ssize_t count = ::send(fd_, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
            if (count <= 0) return;
            done += static_cast<size_t>(count);
        }
    }
    void send_hex(const std::string &hex) const { send(from_hex(hex)); }
    // So many bytes; fewer when the other end closed or nothing came.
    std::string receive(size_t length) const {
        std::string bytes;
        char chunk[65536];
        pollfd ready{fd_, POLLIN, 0};
        while (bytes.size() < length && poll(&ready, 1, PATIENCE_MILLIS) > 0) {
            ssize_t count = recv(fd_, chunk, std::min(sizeof(chunk), length - bytes.size()), 0);
            if (count <= 0) break;
            bytes.append(chunk, static_cast<size_t>(count));
        }
        return bytes;
    }
    void expect_hex(const std::string &hex) const {
        std::string expected = from_hex(hex);
        EXPECT_EQ(to_hex(receive(expected.size())), to_hex(expected));
    }
    // The next whole message.
    std::string receive_message() const {
        std::string head = receive(12);
        if (head.size() < 12) return head;
        auto byte = [&](size_t i) { return static_cast<size_t>(static_cast<unsigned char>(head[i])); };
        return head + receive((byte(9) << 16 | byte(10) << 8 | byte(11)) - 4);
    }
    // Until the other end closes.
    void await_close() const { receive(SIZE_MAX); }

  private:
    int fd_;
};

inline int unix_stream(sockaddr_un *address, const char *path) {
    *address = {};
    address->sun_family = AF_UNIX;
    std::string(path).copy(address->sun_path, sizeof(address->sun_path) - 1);
    return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

class ScriptedPeer {
  public:
    using Script = std::function<void(Wire &)>;

    explicit ScriptedPeer(Script script, bool greet = true, const char *path = PEER_SOCKET) {
        sockaddr_un address;
        listener_ = unix_stream(&address, path);
        unlink(path);
        EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
        EXPECT_EQ(listen(listener_, 4), 0);
        thread_ = std::thread([this, greet, play = std::move(script)] {
            Wire wire(accept(listener_, nullptr, nullptr));
            if (greet) wire.send_hex(captured::HELLO);
            play(wire);
        });
    }
    ~ScriptedPeer() {
        thread_.join();
        close(listener_);
    }
    ScriptedPeer(const ScriptedPeer &) = delete;
    ScriptedPeer &operator=(const ScriptedPeer &) = delete;

  private:
    int listener_;
    std::thread thread_;
};
