// SPDX-License-Identifier: Apache-2.0
#include "core/device.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <semaphore.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/bus.h"
#include "core/files.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "core/thread.h"

std::atomic<int> runflag{1};

static constexpr char STORAGE_FILE[] = "/apetc/rvxa/ecm.conf";
static constexpr mode_t STORAGE_MODE = 0644; // other programs read it
static constexpr char STORAGE_DEFAULTS[] =
    "inmemoryop=0\noutmemoryop=0\nsamba=0\nhcdn_enable=1\nhcdn_open=0\nisusb=1";

int ecm_init() {
    if (access(STORAGE_FILE, F_OK) == 0) {
        LOG("file:%s is exist", STORAGE_FILE);
        LOG("file:%s is exist\n", STORAGE_FILE);
        return 0;
    }
    if (!replace_file(STORAGE_FILE, STORAGE_DEFAULTS, STORAGE_MODE)) {
        LOG("open file:%s fail", STORAGE_FILE);
        return -1;
    }
    LOG("end");
    return 0;
}

int get_networkStatus() {
    JsonRoot root;
    json_object *wan = get_dev_info("vrop.waninfo", "get", &root);
    if (wan == nullptr) {
        LOG("get network status fail");
        return 0;
    }
    char status[32];
    copy_text(status, _json_get_str(wan, "status"));
    return strcmp(status, "Connected") == 0 ? 1 : 0;
}

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
