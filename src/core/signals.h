// SPDX-License-Identifier: Apache-2.0
// The signal handlers, and the flag by which SIGINT speaks to the threads.
#pragma once

#include <atomic>

// 1 until SIGINT; ends the relay thread.
extern std::atomic<int> runflag;

// What SIGINT does: says so, logs, clears runflag; the process goes on. Not async-signal-safe:
// install_sig_exit has it run on a thread.
void sig_exit(int signal);
// Makes SIGINT run sig_exit. 0, or -1 when the thread or the handler could not be made.
int install_sig_exit();

// Reaps ended children on SIGCHLD; not installed by start-up.
void sig_handle(int signal);
