// SPDX-License-Identifier: Apache-2.0
#include "core/process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>

namespace {

// posix_spawn's instructions, released with the object.
struct FileActions {
    FileActions() { posix_spawn_file_actions_init(&actions); }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions); }
    FileActions(const FileActions &) = delete;
    FileActions &operator=(const FileActions &) = delete;
    posix_spawn_file_actions_t actions;
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
    const int said = piped == Piped::output ? STDOUT_FILENO : STDERR_FILENO;
    const int silent = piped == Piped::output ? STDERR_FILENO : STDOUT_FILENO;
    posix_spawn_file_actions_addopen(&files.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files.actions, silent, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&files.actions, writing.get(), said);
    std::vector<char *> words = words_of(arguments);
    error_ = posix_spawnp(&pid_, words[0], &files.actions, nullptr, words.data(), environ);
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

int Process::read_all(size_t limit, std::string *text) {
    char piece[4096];
    for (;;) {
        const ssize_t got = read(output_.get(), piece, sizeof piece);
        if (got == 0) break;
        if (got > 0)
            text->append(piece, std::min(static_cast<size_t>(got), limit - std::min(limit, text->size())));
        else if (errno == EAGAIN) {
            pollfd ready = {output_.get(), POLLIN, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR)
            break;
    }
    return wait();
}

int run_program(const Arguments &arguments) {
    return Process(arguments).wait();
}
