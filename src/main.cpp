// SPDX-License-Identifier: Apache-2.0
// The agent's start-up order. What starts here ends only with the process.
#include <cstdio>
#include <iterator>
#include <malloc.h>
#include <unistd.h>

#include "binding/sdk_record.h"
#include "core/bus.h"
#include "core/clock.h"
#include "core/global_config.h"
#include "core/log.h"
#include "core/program.h"
#include "core/registration.h"
#include "core/signals.h"
#include "core/storage_file.h"
#include "core/thread.h"
#include "core/wan_status.h"
#include "devices/ap_devices.h"
#include "devices/runtime.h"
#include "https/time_control.h"
#include "https/transfer.h"
#include "relay/event_client.h"
#include "relay/relay.h"
#include "services/capture.h"
#include "tebra_sdk.h"
#include "upgrade/https_upgrade.h"

namespace {

constexpr unsigned NETWORK_BACK_OFF[] = {3, 3,  3,  3,  3, 3,
                                         5, 10, 25, 45, 60}; // seconds; the last one for ever
constexpr int RELAY_ATTEMPTS = 20;
constexpr unsigned RELAY_RETRY_SECONDS = 2;

void wait_for_network() {
    const unsigned *last = std::end(NETWORK_BACK_OFF) - 1;
    for (const unsigned *seconds = NETWORK_BACK_OFF; get_networkStatus() == 0;
         seconds += seconds < last ? 1 : 0) {
        LOG("network is down, waiting..................");
        pause_seconds(*seconds);
    }
}

void say_thread_error() {
    qvtk_log("pthread_create eventudp_server error!");
    LOG("pthread_create eventudp_server error!");
}

// What became of the relay: the last result of opening its socket, and whether its thread could be started.
struct RelayStart {
    int socket_result;
    bool thread_failed;
};

RelayStart start_relay() {
    set_relay_actions({
        .set_check_interval = set_http_upgrade_check_interval,
        .all_devices_report = apDevices_event_report,
        .capture_address = get_cap_realurl,
    });
    int result = -1;
    for (int attempt = 0; attempt < RELAY_ATTEMPTS; attempt++) {
        result = creat_event_server();
        LOG("creat tcp socket:%d", result);
        if (result == 0) {
            LOG("start event handle");
            return {result, start_detached(eventudp_server, &runflag) != 0};
        }
        pause_seconds(RELAY_RETRY_SECONDS);
    }
    return {result, false};
}

// Everything up to the network's coming up: nothing here runs beside anything else.
void load() {
    ubus_init(0);
    if (install_sig_exit() != 0) perror("SIGINT");
    ubus_wait_daemon();
    get_qvtkRegister_info(&register_config);
    LOG("devSecret:%s", register_config.device_secret);
    ecm_init();
    set_device_secret(register_config.device_secret);
    wait_for_network();
}

[[noreturn]] void sleep_for_ever() {
    for (;;)
        pause_seconds(3);
}

// Start-up; returns the process's status when the agent cannot run.
int run() {
    load();
    RelayStart relay = start_relay();
    if (relay.thread_failed) {
        say_thread_error();
        return 0;
    }
    creat_event_client();
    // a negative result alone counts, and never comes: the agent goes on without the poll
    if (start_detached(timeControl_proc, nullptr) < 0) {
        say_thread_error();
        return relay.socket_result;
    }
    init_config();
    if (register_config.device_secret[0] == '\0') return -1;
    if (start_sdk(&global_config) != 0) {
        LOG("start sdk fail");
        LOG("start sdk fail\n");
        return -1;
    }
    set_capture_round(capture_round);
    runTime_threadStart();
    http_upgrade_thread_start();
    sleep_for_ever();
}

} // namespace

int main(int argc, char **argv) {
    if (told_about_program(argc, argv, "qvtkd", "qvtkd (runs until SIGTERM; its settings are on the bus)"))
        return 0;
#ifdef M_ARENA_MAX
    mallopt(M_ARENA_MAX, 1); // each thread's own would keep what its busiest moment took
#endif
    if (!init_transfers()) qvtk_log("libcurl cannot be used");
    setvbuf(stdout, nullptr, _IOLBF, 0); // a console line is not lost with the process
    int status = run();
    fflush(stdout);
    _exit(status); // not exit(): the threads already started still use what that would destroy
}
