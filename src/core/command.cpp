// SPDX-License-Identifier: Apache-2.0
#include "core/command.h"

#include <cerrno>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/log.h"

// The wait status of the command, -1 when there is none. Not system(): that lets every SIGINT go by unheard
// while the command runs.
static int shell_status(const char *command) {
    if (command == nullptr) return -1;
    const char *words[] = {"sh", "-c", command, nullptr};
    pid_t child = 0;
    if (posix_spawn(&child, "/bin/sh", nullptr, nullptr, const_cast<char **>(words), environ) != 0) return -1;
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return status;
}

static bool has_exited(int status) {
    return status != -1 && WIFEXITED(status);
}

int run_cmd(int *exit_code, const char *command) {
    int status = shell_status(command);
    if (!has_exited(status)) {
        LOG("Child process is signaled");
        return -1;
    }
    *exit_code = WEXITSTATUS(status);
    return 0;
}

int run_cmd_ext(const char *command) {
    int exit_code = 0;
    return run_cmd(&exit_code, command) == 0 && exit_code == 0 ? 0 : -1;
}

int rvxa_run_cmd(int *exit_code, const char *command) {
    LOG("cmd:%s", command == nullptr ? "" : command);
    int status = shell_status(command);
    LOG("status:%d", status);
    if (!has_exited(status)) {
        LOG("Child process is signaled");
        return -1;
    }
    *exit_code = WEXITSTATUS(status);
    LOG("ec:%d cmd:%s", *exit_code, command);
    return 0;
}

int rvxa_run_cmd_ext(const char *command) {
    int exit_code = 0;
    return rvxa_run_cmd(&exit_code, command) == 0 && exit_code == 0 ? 0 : -1;
}
