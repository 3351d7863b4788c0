// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
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
constexpr int64_t MILLION = 1000000;

struct TakenSignal {
    int number;
    bool taken;
};

std::mutex init_mutex; // connections may be opened by several threads at once
TakenSignal signals[] = {{SIGINT, false}, {SIGTERM, false}, {SIGCHLD, false}};
volatile int wake_fd = -1;
volatile sig_atomic_t ended_by;
std::vector<uloop_fd *> watched;
list_head timeouts = {&timeouts, &timeouts}; // the first to come first

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

int64_t micros(const timeval &time) {
    return time.tv_sec * MILLION + time.tv_usec;
}

int64_t now_micros() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * MILLION + now.tv_nsec / 1000;
}

uloop_timeout *first_timeout() {
    return list_empty(&timeouts) ? nullptr : list_first_entry(&timeouts, uloop_timeout, list);
}

// Milliseconds until the first timeout, as poll() takes them.
int wait_millis() {
    const uloop_timeout *first = first_timeout();
    if (!first) return -1;
    // rounded up: a wait that ends early would be followed by one that ends at once
    const int64_t left = (micros(first->time) - now_micros() + 999) / 1000;
    return static_cast<int>(std::clamp<int64_t>(left, 0, INT_MAX));
}

// What a callback sets anew waits for the next turn.
void run_timeouts() {
    const int64_t now = now_micros();
    for (uloop_timeout *due = first_timeout(); due && micros(due->time) <= now && !cancelled();
         due = first_timeout()) {
        uloop_timeout_cancel(due);
        due->cb(due);
    }
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

// Waits until something is ready or a timeout is due, and calls what is ready; what a callback removes is not
// called.
void poll_once() {
    std::vector<uloop_fd *> socks = watched;
    std::vector<pollfd> fds;
    fds.reserve(socks.size() + 1);
    for (const uloop_fd *sock : socks)
        fds.push_back({sock->fd, poll_events(sock), 0});
    fds.push_back({wake_fd, POLLIN, 0});
    if (poll(fds.data(), fds.size(), wait_millis()) <= 0) return;
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

int uloop_run(void) {
    ended_by = 0;
    uloop_cancelled = false;
    while (!cancelled()) {
        run_timeouts();
        if (!cancelled()) poll_once();
    }
    return ended_by;
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

int uloop_timeout_set(uloop_timeout *timeout, int msecs) {
    if (timeout->pending) uloop_timeout_cancel(timeout);
    const int64_t due = now_micros() + int64_t{1000} * msecs;
    timeout->time = {static_cast<time_t>(due / MILLION), static_cast<suseconds_t>(due % MILLION)};
    timeout->pending = true;
    list_head *later;
    list_for_each(later, &timeouts) {
        if (micros(list_entry(later, uloop_timeout, list)->time) > due) break;
    }
    list_add_tail(&timeout->list, later);
    return 0;
}

int uloop_timeout_cancel(uloop_timeout *timeout) {
    if (!timeout->pending) return -1;
    list_del(&timeout->list);
    timeout->pending = false;
    return 0;
}
