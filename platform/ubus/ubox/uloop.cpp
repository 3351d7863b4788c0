// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <vector>

extern "C" {
#include <libubox/uloop.h>
}

bool uloop_cancelled;

namespace {
using Clock = std::chrono::steady_clock;
using Millis = std::chrono::milliseconds;

struct TakenSignal {
    int number;
    bool taken;
};

std::mutex init_mutex; // connections may be opened by several threads at once
TakenSignal signals[] = {{SIGINT, false}, {SIGTERM, false}, {SIGCHLD, false}};
volatile int wake_fd = -1;
volatile sig_atomic_t ended_by;
std::vector<uloop_fd *> watched;

// uloop_end is a plain store to a plain bool; signal handlers do the same with care.
bool cancelled() {
    return __atomic_load_n(&uloop_cancelled, __ATOMIC_RELAXED);
}

void on_signal(int number) {
    int saved = errno;
    if (number != SIGCHLD) {
        ended_by = number;
        __atomic_store_n(&uloop_cancelled, true, __ATOMIC_RELAXED);
    }
    uint64_t one = 1;
    if (write(wake_fd, &one, sizeof(one)) < 0) {
        // The loop is awake already.
    }
    errno = saved;
}

void take_signal(TakenSignal *signal) {
    struct sigaction current {};
    sigaction(signal->number, nullptr, &current);
    if ((current.sa_flags & SA_SIGINFO) || current.sa_handler != SIG_DFL) return;
    struct sigaction ours {};
    ours.sa_handler = on_signal;
    signal->taken = sigaction(signal->number, &ours, nullptr) == 0;
}

void restore_signal(TakenSignal *signal) {
    struct sigaction current {};
    sigaction(signal->number, nullptr, &current);
    if (signal->taken && !(current.sa_flags & SA_SIGINFO) && current.sa_handler == on_signal)
        ::signal(signal->number, SIG_DFL);
    signal->taken = false;
}

int millis_until(Clock::time_point end) {
    return static_cast<int>(std::max<int64_t>(std::chrono::ceil<Millis>(end - Clock::now()).count(), 0));
}

bool is_watched(const uloop_fd *sock) {
    return std::find(watched.begin(), watched.end(), sock) != watched.end();
}

short poll_events(const uloop_fd *sock) {
    int events = POLLRDHUP;
    if (sock->flags & ULOOP_READ) events |= POLLIN;
    if (sock->flags & ULOOP_WRITE) events |= POLLOUT;
    return static_cast<short>(events);
}

void serve(uloop_fd *sock, short ready) {
    unsigned events = 0;
    if (ready & (POLLIN | POLLHUP | POLLRDHUP | POLLERR)) events |= ULOOP_READ;
    if (ready & POLLOUT) events |= ULOOP_WRITE;
    if (ready & (POLLHUP | POLLRDHUP)) sock->eof = true;
    if (ready & (POLLERR | POLLNVAL)) {
        sock->error = true;
        if (!(sock->flags & ULOOP_ERROR_CB)) uloop_fd_delete(sock);
    }
    sock->cb(sock, events);
}

// Waits at most so long (negative: without limit) and calls what is ready; what a callback removes is not
// called.
void poll_once(int timeout) {
    std::vector<uloop_fd *> socks = watched;
    std::vector<pollfd> fds;
    fds.reserve(socks.size() + 1);
    for (const uloop_fd *sock : socks)
        fds.push_back({sock->fd, poll_events(sock), 0});
    fds.push_back({wake_fd, POLLIN, 0});
    if (poll(fds.data(), fds.size(), timeout) <= 0) return;
    uint64_t count;
    if (fds.back().revents && read(wake_fd, &count, sizeof(count)) < 0) {
        // Somebody else has read it.
    }
    for (size_t i = 0; i < socks.size() && !cancelled(); i++) {
        if (fds[i].revents && is_watched(socks[i])) serve(socks[i], fds[i].revents);
    }
}
} // namespace

int uloop_init(void) {
    std::lock_guard<std::mutex> lock(init_mutex);
    if (wake_fd >= 0) return 0;
    wake_fd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (wake_fd < 0) return -1;
    ::signal(SIGPIPE, SIG_IGN);
    for (TakenSignal &signal : signals)
        take_signal(&signal);
    return 0;
}

int uloop_run_timeout(int timeout) {
    Clock::time_point end = Clock::now() + Millis(std::max(timeout, 0));
    ended_by = 0;
    uloop_cancelled = false;
    while (!cancelled()) {
        poll_once(timeout < 0 ? -1 : millis_until(end));
        if (timeout >= 0 && millis_until(end) == 0) break;
    }
    return ended_by;
}

void uloop_done(void) {
    std::lock_guard<std::mutex> lock(init_mutex);
    for (TakenSignal &signal : signals)
        restore_signal(&signal);
    if (wake_fd >= 0) close(wake_fd);
    wake_fd = -1;
    for (uloop_fd *sock : watched)
        sock->registered = false;
    watched.clear();
}

int uloop_fd_add(uloop_fd *sock, unsigned int flags) {
    if (!(flags & (ULOOP_READ | ULOOP_WRITE))) return uloop_fd_delete(sock);
    if (!sock->cb || sock->fd < 0) return -1;
    if (!sock->registered && !(flags & ULOOP_BLOCKING)) {
        int mode = fcntl(sock->fd, F_GETFL);
        if (mode < 0 || fcntl(sock->fd, F_SETFL, mode | O_NONBLOCK) != 0) return -1;
    }
    sock->flags = static_cast<uint8_t>(flags);
    if (!is_watched(sock)) watched.push_back(sock);
    sock->registered = true;
    sock->eof = sock->error = false;
    return 0;
}

int uloop_fd_delete(uloop_fd *sock) {
    auto at = std::find(watched.begin(), watched.end(), sock);
    if (at == watched.end()) return -1;
    watched.erase(at);
    sock->registered = false;
    sock->flags = 0;
    return 0;
}
