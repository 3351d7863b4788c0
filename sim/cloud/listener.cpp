// SPDX-License-Identifier: Apache-2.0
#include "listener.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace cloudsim {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::chrono::seconds REOPEN_LIMIT(5);
constexpr int RETRY_MILLIS = 20;

// The threads take no signals: those of the process are its owner's, and SIGPIPE is of no use to anybody.
class BlockedSignals {
  public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_;
};

[[noreturn]] void fail(const std::string &what) {
    throw std::runtime_error("cannot listen on " + what + ": " + std::strerror(errno));
}

Descriptor open_socket(const sockaddr_storage &address, socklen_t length) {
    Descriptor made(socket(address.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    int on = 1;
    if (made) setsockopt(made.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (!made || bind(made.get(), reinterpret_cast<const sockaddr *>(&address), length) != 0 ||
        listen(made.get(), 128) != 0)
        made.reset();
    return made;
}

} // namespace

Listener::Listener(SSL_CTX *tls, Serve serve)
    : tls_(tls), serve_(std::move(serve)), wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

Listener::~Listener() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake();
    if (thread_.joinable()) thread_.join();
    join_done_workers(true);
    if (address_.ss_family == AF_UNIX) unlink(reinterpret_cast<sockaddr_un *>(&address_)->sun_path);
}

int Listener::listen_tcp(const std::string &host, int port) {
    if (port < 0 || port > UINT16_MAX)
        throw std::runtime_error("there is no port " + std::to_string(port) + "; 65535 is the last");
    auto *address = reinterpret_cast<sockaddr_in *>(&address_);
    address->sin_family = AF_INET;
    address->sin_port = htons(static_cast<std::uint16_t>(port));
    if (inet_pton(AF_INET, host.c_str(), &address->sin_addr) != 1) {
        errno = EINVAL;
        fail(host);
    }
    address_length_ = sizeof *address;
    socket_ = open_socket(address_, address_length_);
    if (!socket_) fail(host + ":" + std::to_string(port));
    getsockname(socket_.get(), reinterpret_cast<sockaddr *>(&address_), &address_length_);
    start();
    return ntohs(address->sin_port);
}

void Listener::listen_unix(const std::string &path) {
    auto *address = reinterpret_cast<sockaddr_un *>(&address_);
    if (path.empty() || path.size() >= sizeof address->sun_path) {
        errno = ENAMETOOLONG;
        fail(path);
    }
    struct stat old;
    if (lstat(path.c_str(), &old) == 0 && S_ISSOCK(old.st_mode)) unlink(path.c_str());
    address->sun_family = AF_UNIX;
    path.copy(address->sun_path, path.size());
    address_length_ = sizeof *address;
    socket_ = open_socket(address_, address_length_);
    if (!socket_ || chmod(path.c_str(), 0600) != 0) {
        address->sun_family = AF_UNSPEC; // not ours: the destructor must not remove it
        fail(path);
    }
    start();
}

void Listener::start() {
    BlockedSignals blocked;
    thread_ = std::thread([this] { run(); });
}

void Listener::set_listening(bool listening, milliseconds time) {
    std::unique_lock lock(mutex_);
    wished_ = listening;
    resume_.reset();
    if (!listening && time.count() > 0) resume_ = steady_clock::now() + time;
    wake();
    if (!changed_.wait_for(lock, REOPEN_LIMIT, [&] { return listening_ == wished_ || stopping_; }))
        throw std::runtime_error("cannot listen again: another program has taken the address");
}

void Listener::wake() const {
    std::uint64_t one = 1;
    (void)!write(wake_.get(), &one, sizeof one);
}

void Listener::run() {
    bool overrun = false; // nobody can be served for the moment
    for (;;) {
        {
            std::lock_guard lock(mutex_);
            if (stopping_) return;
            follow_wish();
        }
        pollfd waits[] = {{wake_.get(), POLLIN, 0}, {overrun ? -1 : socket_.get(), POLLIN, 0}};
        poll(waits, 2, overrun ? RETRY_MILLIS : patience());
        std::uint64_t count;
        if (waits[0].revents != 0) (void)!read(wake_.get(), &count, sizeof count);
        overrun = waits[1].revents != 0 && !accept_one();
    }
}

// Called with the lock held. An address that is not free again yet is tried anew a little later.
void Listener::follow_wish() {
    if (resume_ && steady_clock::now() >= *resume_) {
        wished_ = true;
        resume_.reset();
    }
    if (wished_ == listening_) return;
    socket_ = wished_ ? open_socket(address_, address_length_) : Descriptor();
    listening_ = static_cast<bool>(socket_);
    changed_.notify_all();
}

int Listener::patience() {
    std::lock_guard lock(mutex_);
    if (wished_ != listening_) return RETRY_MILLIS;
    if (!resume_) return -1;
    auto left = std::chrono::duration_cast<milliseconds>(*resume_ - steady_clock::now()).count();
    return static_cast<int>(left < 0 ? 0 : left + 1);
}

// False when the system has no descriptor or thread left: who came waits, or is turned away.
bool Listener::accept_one() {
    Descriptor peer(accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!peer) return errno == EAGAIN || errno == EINTR || errno == ECONNABORTED;
    join_done_workers(false);
    std::lock_guard lock(mutex_);
    Worker &worker = workers_.emplace_back();
    try {
        worker.connection = std::make_unique<Connection>(std::move(peer), tls_);
        worker.thread = std::thread([this, &worker] { serve(worker); });
    } catch (const std::exception &) {
        workers_.pop_back();
        return false;
    }
    return true;
}

void Listener::serve(Worker &worker) {
    if (worker.connection->handshake()) serve_(*worker.connection);
    std::lock_guard lock(mutex_);
    worker.connection.reset();
    worker.done = true;
}

void Listener::join_done_workers(bool all) {
    std::list<Worker> leaving;
    {
        std::lock_guard lock(mutex_);
        for (auto worker = workers_.begin(); worker != workers_.end();) {
            auto next = std::next(worker);
            if (all && worker->connection) worker->connection->interrupt();
            if (all || worker->done) leaving.splice(leaving.end(), workers_, worker);
            worker = next;
        }
    }
    for (Worker &worker : leaving)
        worker.thread.join();
}

} // namespace cloudsim
