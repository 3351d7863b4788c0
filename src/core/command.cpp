// SPDX-License-Identifier: Apache-2.0
#include "core/command.h"

#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include "core/log.h"
#include "core/own_signals.h"
#include "core/time_limit.h"

// Leading a process group, so that what hangs can be ended with all that it has started; -1 without a shell.
static pid_t start_shell(const char *command) {
    if (command == nullptr) return -1;
    const char *words[] = {"sh", "-c", command, nullptr};
    const OwnSignals leading(POSIX_SPAWN_SETPGROUP);
    pid_t shell = -1;
    if (leading.error() != 0 ||
        posix_spawn(&shell, "/bin/sh", nullptr, leading.get(), const_cast<char **>(words), environ) != 0)
        return -1;
    return shell;
}

// Not system(): that lets every SIGINT go by unheard while the command runs.
int shell_status(const char *command, unsigned limit_millis) {
    const pid_t shell = start_shell(command);
    if (shell < 0) return -1;
    const TimeLimit limit(-1, limit_millis);
    int status = 0;
    while (waitpid(shell, &status, 0) < 0) {
        if (errno != EINTR) return -1;
        if (TimeLimit::over()) kill(-shell, SIGKILL);
    }
    return status;
}

static bool has_exited(int status) {
    return status != -1 && WIFEXITED(status);
}

int run_cmd(int *exit_code, const char *command) {
    int status = shell_status(command, COMMAND_LIMIT_MILLIS);
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
    int status = shell_status(command, COMMAND_LIMIT_MILLIS);
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
