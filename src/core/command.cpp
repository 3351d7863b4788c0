// SPDX-License-Identifier: Apache-2.0
#include "core/command.h"

#include <cstdlib>
#include <sys/wait.h>

#include "core/log.h"

// The wait status of the command, -1 when there is none; no command at all must not ask whether there is a
// shell.
static int shell_status(const char *command) {
    return command == nullptr ? -1 : system(command);
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
