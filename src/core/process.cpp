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

namespace {

// posix_spawn's instructions, released with the object.
struct FileActions {
    FileActions() { posix_spawn_file_actions_init(&actions); }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions); }
    FileActions(const FileActions &) = delete;
    FileActions &operator=(const FileActions &) = delete;
    posix_spawn_file_actions_t actions;
};

// The agent ignores SIGPIPE; a program that goes on when nobody reads it any more would outlive the agent.
struct OwnSignals {
    OwnSignals() {
        sigset_t signals;
        posix_spawnattr_init(&attributes);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes, &signals);
        for (int number : {SIGPIPE, SIGINT, SIGQUIT, SIGTERM, SIGHUP})
            sigaddset(&signals, number);
        posix_spawnattr_setsigdefault(&attributes, &signals);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~OwnSignals() { posix_spawnattr_destroy(&attributes); }
    OwnSignals(const OwnSignals &) = delete;
    OwnSignals &operator=(const OwnSignals &) = delete;
    posix_spawnattr_t attributes;
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
    FileActions files;
    posix_spawn_file_actions_addopen(&files.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    for (const auto &[stream, which] :
         {std::pair{STDOUT_FILENO, Piped::output}, {STDERR_FILENO, Piped::error}})
        if (piped == which)
            posix_spawn_file_actions_adddup2(&files.actions, writing.get(), stream);
        else
            posix_spawn_file_actions_addopen(&files.actions, stream, "/dev/null", O_WRONLY, 0);
    const OwnSignals signals;
    std::vector<char *> words = words_of(arguments);
    error_ = posix_spawnp(&pid_, words[0], &files.actions, &signals.attributes, words.data(), environ);
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
