// SPDX-License-Identifier: Apache-2.0
#include "core/signals.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <semaphore.h>
#include <sys/wait.h>

#include "core/log.h"
#include "core/thread.h"

std::atomic<int> runflag{1};

void sig_exit(int) {
    printf("SIGINT signal! will exit....\n");
    // The process goes on, so the mutexes that its other threads still take are left whole.
    LOG("destroy ubus_mutex");
    runflag = 0;
}

static sem_t interrupts;

static void note_interrupt(int) {
    int error = errno;
    sem_post(&interrupts);
    errno = error;
}

static void *serve_interrupts(void *) {
    for (;;)
        if (sem_wait(&interrupts) == 0) sig_exit(SIGINT);
    return nullptr;
}

int install_sig_exit() {
    struct sigaction action = {};
    action.sa_handler = note_interrupt;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    if (sem_init(&interrupts, 0, 0) != 0 || start_detached(serve_interrupts, nullptr) != 0) return -1;
    return sigaction(SIGINT, &action, nullptr);
}

void sig_handle(int signal) {
    if (signal != SIGCHLD) return;
    LOG("handle child exit!");
    pid_t child = 0;
    do {
        child = waitpid(-1, nullptr, WNOHANG);
    } while (child > 0);
    LOG("child(%d) had exit!", child);
}
