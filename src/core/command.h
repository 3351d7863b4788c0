// SPDX-License-Identifier: Apache-2.0
// Commands run by the system shell, each in a process group of its own and with every signal as the system
// has it. Any thread; each call blocks until the command has ended, or has been killed with its whole group
// because its time was over.
#pragma once

// Longer than the helper programs give themselves: who reaches it hangs.
inline constexpr unsigned COMMAND_LIMIT_MILLIS = 300000;

// The command's status as waitpid(2) gives it; -1 when the shell could not be started.
int shell_status(const char *command, unsigned limit_millis);

// 0 and the exit status (0-255); -1, with exit_code left alone, when the shell could not be started or was
// ended by a signal, as it is after COMMAND_LIMIT_MILLIS.
int run_cmd(int *exit_code, const char *command);
// 0 when the command exited with 0, else -1.
int run_cmd_ext(const char *command);

// The same two, logging command and status.
int rvxa_run_cmd(int *exit_code, const char *command);
int rvxa_run_cmd_ext(const char *command);
