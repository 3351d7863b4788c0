// SPDX-License-Identifier: Apache-2.0
// One accepted connection. The HTTP library reads requests from it as a stream; what the library writes is
// collected, so that the answer can leave exactly as a fault wants it.
#pragma once
#include "certificate.h"
#include "core/handles.h"
#include <array>
#include <chrono>
#include <httplib.h>
#include <string>
#include <string_view>

namespace cloudsim {

// Used by the connection's own thread, except interrupt().
class Connection : public httplib::Stream {
  public:
    // `tls`: the server's settings, which must outlive it; null: plain.
    Connection(Descriptor socket, SSL_CTX *tls);
    ~Connection() override;
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool handshake(); // true at once when plain
    // Waits for the first byte of a request; false when none came in time or the peer went away.
    bool wait_request(std::chrono::milliseconds limit);
    std::string take_answer(); // what the library wrote since the last call

    // Sends all bytes now, as one TLS record when they fit (16 KiB). False when the peer is gone.
    bool send(std::string_view bytes);
    // Waits, but no longer than the peer does; false when it went away.
    bool rest(std::chrono::milliseconds time);
    void wait_peer_gone();  // reads and forgets
    void finish();          // ends in order: TLS close_notify, then FIN
    void cut();             // ends the bytes here: FIN without close_notify, after which nothing sent is lost
    void reset();           // the destructor's close sends RST
    void interrupt() const; // any thread: the functions above come back

    bool is_readable() const override;
    bool is_writable() const override { return true; }
    ssize_t read(char *to, std::size_t size) override;
    ssize_t write(const char *from, std::size_t size) override;
    void get_remote_ip_and_port(std::string &ip, int &port) const override;
    void get_local_ip_and_port(std::string &ip, int &port) const override;
    socket_t socket() const override { return socket_.get(); }

  private:
    bool fill();
    void end_sending();

    Descriptor socket_;
    TlsOwner<SSL> tls_;
    std::array<char, 16384> input_;
    std::size_t input_used_ = 0, input_end_ = 0;
    std::string answer_;
};

} // namespace cloudsim
