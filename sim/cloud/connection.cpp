// SPDX-License-Identifier: Apache-2.0
#include "connection.h"

#include <algorithm>
#include <cstring>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace cloudsim {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr timeval peer_patience{10, 0}; // a peer that stops in the middle of a request or of an answer
constexpr milliseconds close_patience{5000};

int as_timeout(milliseconds time) {
    return static_cast<int>(std::clamp<milliseconds::rep>(time.count(), 0, 1'000'000'000));
}

} // namespace

Connection::Connection(Descriptor socket, SSL_CTX *tls) : socket_(std::move(socket)) {
    int on = 1;
    setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on); // a unix socket refuses it, rightly
    setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &peer_patience, sizeof peer_patience);
    setsockopt(socket_.get(), SOL_SOCKET, SO_SNDTIMEO, &peer_patience, sizeof peer_patience);
    if (tls == nullptr) return;
    tls_.reset(SSL_new(tls));
    if (tls_)
        SSL_set_fd(tls_.get(), socket_.get());
    else
        interrupt();
}

Connection::~Connection() {
    ERR_clear_error();
}

bool Connection::handshake() {
    return !tls_ || SSL_accept(tls_.get()) == 1;
}

bool Connection::wait_request(milliseconds limit) {
    if (is_readable()) return true;
    pollfd wait{socket_.get(), POLLIN, 0};
    return poll(&wait, 1, as_timeout(limit)) > 0 && fill();
}

std::string Connection::take_answer() {
    return std::exchange(answer_, {});
}

bool Connection::send(std::string_view bytes) {
    while (!bytes.empty()) {
        int most = static_cast<int>(std::min<std::size_t>(bytes.size(), 1 << 20));
        ssize_t sent =
            tls_ ? SSL_write(tls_.get(), bytes.data(), most)
                 : ::send(socket_.get(), bytes.data(), static_cast<std::size_t>(most), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool Connection::rest(milliseconds time) {
    pollfd wait{socket_.get(), POLLRDHUP, 0};
    return time.count() <= 0 || poll(&wait, 1, as_timeout(time)) == 0;
}

void Connection::wait_peer_gone() {
    char unread[4096];
    ssize_t got = 0;
    do
        got = recv(socket_.get(), unread, sizeof unread, 0);
    while (got > 0 || (got < 0 && (errno == EAGAIN || errno == EINTR)));
}

void Connection::finish() {
    if (tls_) SSL_shutdown(tls_.get());
    end_sending();
}

void Connection::cut() {
    end_sending();
}

// Closing with unread input would send RST, which may overtake and destroy what the peer has not read yet; so
// the peer goes first.
void Connection::end_sending() {
    shutdown(socket_.get(), SHUT_WR);
    char unread[4096];
    auto end = steady_clock::now() + close_patience;
    for (;;) {
        pollfd wait{socket_.get(), POLLIN, 0};
        auto left = std::chrono::duration_cast<milliseconds>(end - steady_clock::now());
        if (poll(&wait, 1, as_timeout(left)) <= 0 || recv(socket_.get(), unread, sizeof unread, 0) <= 0)
            return;
    }
}

void Connection::reset() {
    linger abort{1, 0};
    setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
}

void Connection::interrupt() const {
    shutdown(socket_.get(), SHUT_RDWR);
}

bool Connection::fill() {
    int room = static_cast<int>(input_.size());
    ssize_t got = tls_ ? SSL_read(tls_.get(), input_.data(), room)
                       : recv(socket_.get(), input_.data(), input_.size(), 0);
    input_used_ = 0;
    input_end_ = got > 0 ? static_cast<std::size_t>(got) : 0;
    return got > 0;
}

bool Connection::is_readable() const {
    return input_used_ < input_end_;
}

ssize_t Connection::read(char *to, std::size_t size) {
    if (!is_readable() && !fill()) return 0;
    std::size_t count = std::min(size, input_end_ - input_used_);
    std::memcpy(to, input_.data() + input_used_, count);
    input_used_ += count;
    return static_cast<ssize_t>(count);
}

// "100 Continue" (RFC 9110, 15.2.1) is what the peer waits for before it sends its body: no part of the
// answer.
ssize_t Connection::write(const char *from, std::size_t size) {
    std::string_view bytes(from, size);
    if (answer_.empty() && bytes.starts_with("HTTP/1.1 100 "))
        return send(bytes) ? static_cast<ssize_t>(size) : -1;
    answer_.append(bytes);
    return static_cast<ssize_t>(size);
}

void Connection::get_remote_ip_and_port(std::string &ip, int &port) const {
    ip = "127.0.0.1";
    port = 0;
}

void Connection::get_local_ip_and_port(std::string &ip, int &port) const {
    get_remote_ip_and_port(ip, port);
}

} // namespace cloudsim
