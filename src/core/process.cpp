// SPDX-License-Identifier: Apache-2.0
#include "core/process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <utility>

#include "core/own_signals.h"

namespace {

// The streams of a new process: the one that is piped goes to `pipe`, the others to /dev/null.
class Streams {
  public:
    Streams(Process::Piped piped, int pipe) : error_(posix_spawn_file_actions_init(&actions_)) {
        take_null(STDIN_FILENO, O_RDONLY);
        for (const auto &[stream, which] :
             {std::pair{STDOUT_FILENO, Process::Piped::output}, {STDERR_FILENO, Process::Piped::error}})
            if (piped != which)
                take_null(stream, O_WRONLY);
            else if (error_ == 0)
                error_ = posix_spawn_file_actions_adddup2(&actions_, pipe, stream);
    }
    ~Streams() { posix_spawn_file_actions_destroy(&actions_); }
    Streams(const Streams &) = delete;
    Streams &operator=(const Streams &) = delete;

    int error() const { return error_; }
    const posix_spawn_file_actions_t *get() const { return &actions_; }

  private:
    void take_null(int stream, int mode) {
        if (error_ == 0) error_ = posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", mode, 0);
    }
    posix_spawn_file_actions_t actions_ = {};
    int error_;
};

std::vector<char *> words_of(const Arguments &arguments) {
    std::vector<char *> words;
    for (const std::string &argument : arguments)
        words.push_back(const_cast<char *>(argument.c_str()));
    words.push_back(nullptr);
    return words;
}

} // namespace

Process::Process(const Arguments &arguments, Piped piped) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        error_ = errno;
        return;
    }
    output_.reset(ends[0]);
    const Descriptor writing(ends[1]);
    fcntl(output_.get(), F_SETFL, O_NONBLOCK);
    const Streams streams(piped, writing.get());
    const OwnSignals signals;
    std::vector<char *> words = words_of(arguments);
    error_ = streams.error() != 0 ? streams.error() : signals.error();
    if (error_ == 0)
        error_ = posix_spawnp(&pid_, words[0], streams.get(), signals.get(), words.data(), environ);
    if (error_ != 0) pid_ = -1;
}

Process::~Process() {
    signal(SIGKILL);
    wait();
}

void Process::signal(int number) const {
    if (pid_ > 0) kill(pid_, number);
}

bool Process::take_status(int options) {
    int status = 0;
    const pid_t taken = waitpid(pid_, &status, options);
    if (taken == 0 || (taken < 0 && errno == EINTR)) return false;
    status_ = taken == pid_ && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    pid_ = -1;
    return true;
}

bool Process::has_ended() {
    return pid_ <= 0 || take_status(WNOHANG);
}

int Process::wait() {
    while (pid_ > 0 && !take_status(0)) {
    }
    return status_;
}

int Process::read_all(size_t limit, int silence_millis, std::string *text) {
    char piece[4096];
    for (;;) {
        const ssize_t got = read(output_.get(), piece, sizeof piece);
        if (got == 0) break;
        if (got > 0) {
            text->append(piece, std::min(static_cast<size_t>(got), limit - std::min(limit, text->size())));
            continue;
        }
        pollfd ready = {output_.get(), POLLIN, 0};
        if (errno == EAGAIN ? poll(&ready, 1, silence_millis) == 0 : errno != EINTR) {
            signal(SIGKILL);
            break;
        }
    }
    return wait();
}

bool Process::closes_within(int millis) const {
    pollfd end = {output_.get(), 0, 0}; // only its closing counts
    return poll(&end, 1, millis) > 0;
}

int run_program(const Arguments &arguments) {
    return Process(arguments, Process::Piped::nothing).wait();
}
