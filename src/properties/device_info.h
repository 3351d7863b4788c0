// SPDX-License-Identifier: Apache-2.0
// The property "deviceInfo": identity, versions and address of the router. Read only; posted when the link
// comes up.
#pragma once

#include <cstdint>

struct DeviceInfo {
    char product_id[64];
    char serial_number[64];
    char model[64];
    char firmware_version[128];
    char external_firmware_version[128];
    char hardware_version[128];
    char manufacturer[128];
    char mac[24];
    char area_code[24];
    char device_identifier[64];
    char ip[64];
    uint32_t online_time; // seconds
    int (*refresh)(DeviceInfo *);
};

// Slots of the property table.
int deviceInfo_init();
int deviceInfo_get(const char *context, char *output, int length);
int connectok_hook_deviceInfo();

// Refreshes a record from the daemon; what the daemon does not give stays. -1 for a null record. The caller
// keeps other threads away from the record.
int get_deviceInfo_conf(DeviceInfo *info);
// The router's address and uptime; left alone when the daemon does not answer.
void get_deviceIp(char *ip, int ip_size, uint32_t *online_time);
