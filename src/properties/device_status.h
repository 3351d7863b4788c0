// SPDX-License-Identifier: Apache-2.0
// The property "deviceStatus": state of the WAN link and its present throughput. Read only; posted when the
// link comes up.
#pragma once

#include <cstdint>

struct DeviceStatus {
    int32_t link_status;    // 2: the WAN cable is unplugged
    int32_t network_status; // always 0
    int32_t up_speed;       // bytes per second
    int32_t down_speed;     // bytes per second
};

// Slots of the property table.
int deviceStatus_init();
int deviceStatus_get(const char *context, char *output, int length);
int connectok_hook_deviceStatus();

// Posts the document every time; in no table.
int deviceStatus_report();

// Refreshes a record from the daemon; what the daemon does not give stays. The caller keeps other threads
// away from the record. 0, or -1 for a null record or no answer.
int get_deviceStatus_config(DeviceStatus *status);
// The WAN rates in bytes per second; -1 for null arguments or no answer.
int get_device_speed(int32_t *up_speed, int32_t *down_speed);
