// SPDX-License-Identifier: Apache-2.0
#include "properties/restart.h"

#include "core/clock.h"
#include "relay/event_client.h"

void announce_restart(const char *interface_name, int delay) {
    char mac[64] = "";
    int usual_delay = 0;
    if (get_networkRestartTime_info(mac, sizeof(mac), &usual_delay) != 0) return;
    send_restart_event(mac, interface_name, delay == USUAL_DELAY ? usual_delay : delay);
    pause_seconds(2);
}
