// SPDX-License-Identifier: Apache-2.0
// What the cloud registration needs, read once from the bus object vrop.qvtkconfig. Written during start-up,
// before there are threads, and only read afterwards.
#pragma once

#include <cstdint>

struct register_config_record {
    char product_key[64];
    char product_secret[64];
    char register_url[128];
    char product_id[64];
    char cache_path[128];
    char log_path[128];
    char upgrade_log_path[128];
    char device_secret[64];
    char backup_url[128];
    char report_url[128];
    char time_url[128];
    char upgrade_progress_url[128];
    char storage_url[128];
    char sdk_log_path[128];
    int32_t network_wait_time; // seconds
};

inline constexpr char DEFAULT_PRODUCT_KEY[] = "Tq83mZc1wk";
inline constexpr char DEFAULT_VENDOR[] = "RVXA";
// Addresses of the device-management server that serve when the configuration gives none.
extern const char *const DEFAULT_CHECK_UPGRADE_URL;
extern const char *const DEFAULT_UPGRADE_PROGRESS_URL;

extern register_config_record register_config; // the process's own
extern int32_t app_waitTime;                   // seconds; network_wait_time after loading

// Fills the record from the bus or with defaults, sets the log paths, app_waitTime and the format flag. 0, or
// -1 for a null record.
int get_qvtkRegister_info(register_config_record *record);

// The text "formatflag" of the configuration, empty when there is none; 127 characters at most.
const char *get_format_flag();

// Copies the device secret of the SDK's enrolment cache /tmp/qvtk.cache, cut to size - 1 characters. 0, also
// when the cache has no "secret" (output unchanged); -1 for bad arguments or an unreadable cache.
int get_deviceSecret(char *output, int size);
