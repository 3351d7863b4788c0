// SPDX-License-Identifier: Apache-2.0
// What start-up does to the device and asks of it, and the signal handlers.
#pragma once

#include <atomic>

// 1 until SIGINT; ends the relay thread.
extern std::atomic<int> runflag;

// Creates /apetc/rvxa/ecm.conf, the key=value store of the storage features, when it is missing. 0 when it is
// there, -1 when it could not be created.
int ecm_init();

// 1 when the WAN is up, else 0, also when the daemon does not answer.
int get_networkStatus();

// What SIGINT does: says so, logs, clears runflag; the process goes on. Not async-signal-safe:
// install_sig_exit has it run on a thread.
void sig_exit(int signal);
// Makes SIGINT run sig_exit. 0, or -1 when the thread or the handler could not be made.
int install_sig_exit();

// Reaps ended children on SIGCHLD; not installed by start-up.
void sig_handle(int signal);
