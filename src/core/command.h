// SPDX-License-Identifier: Apache-2.0
// Commands run by the system shell. Any thread; each call blocks until the command has ended.
#pragma once

// 0 and the exit status (0-255); -1, with exit_code left alone, when the shell could not be started or was
// ended by a signal.
int run_cmd(int *exit_code, const char *command);
// 0 when the command exited with 0, else -1.
int run_cmd_ext(const char *command);

// The same two, logging command and status.
int rvxa_run_cmd(int *exit_code, const char *command);
int rvxa_run_cmd_ext(const char *command);
