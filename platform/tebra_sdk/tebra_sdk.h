/* SPDX-License-Identifier: Apache-2.0 */
/*
 * tebra_sdk.h - the binary contract between the agent and the cloud SDK, libtebra_sdk.so.
 *
 * The SDK reads the records below directly from the agent's memory, so their layout is fixed to the byte
 * (64-bit pointers, little-endian). It keeps the pointers it is given: records and tables live as long as the
 * process.
 *
 * Threads: init slots run on the thread that calls start_sdk, before the link is opened. Every other slot,
 * handler and callback runs on threads of the SDK's own, several at once. The functions of the SDK may be
 * called from any thread.
 */
#ifndef TEBRA_SDK_H
#define TEBRA_SDK_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Result codes of TEBRA_SDK_Handle_Response. */
enum { TEBRA_RESPONSE_OK = 200, TEBRA_RESPONSE_FAILED = 400 };

typedef int (*tebra_operation)(void);
/* Applies `value`, a JSON document; `reply` has room for `reply_length` bytes. Returns 0 when applied. */
typedef int (*tebra_set_operation)(const char *context, const char *value, char *reply, int reply_length);
/* Writes the current document, terminated, into `output`, which has room for `output_length` bytes. 0 when
 * written. */
typedef int (*tebra_get_operation)(const char *context, char *output, int output_length);
/* Serves one call; answers it, once, with TEBRA_SDK_Handle_Response. `parameters` is JSON text or null. */
typedef int (*tebra_service_handler)(uint32_t call_handle, uint32_t request_id, void *reserved1,
                                     void *reserved2, const char *parameters);
/* A firmware offer; the first three arguments are unused. */
typedef int (*tebra_upgrade_callback)(void *unused1, void *unused2, void *unused3, const char *url,
                                      const char *md5, const char *current_version, const char *strategy);

/* One property; any slot but the name may be null. The table ends with a row whose name is null. */
struct property_row {
    const char *name;
    tebra_operation init;
    tebra_set_operation set;
    tebra_get_operation get;
    tebra_operation connectok_hook;
    void *reserved;
    tebra_operation report;
};

/* One service; the table ends with a row whose name is null. */
struct service_row {
    const char *name;
    void *reserved;
    tebra_service_handler handler;
};

/* Further notifications; only the first is used. */
struct other_handle_table {
    tebra_operation device_online;
    tebra_operation reserved[6];
};

/* What start_sdk is given: identity, tables and callbacks. All texts are terminated. */
struct global_config {
    char product_key[64];
    char serial_number[128];
    char mac[64]; /* AA:BB:CC:DD:EE:FF */
    char software_version[64];
    char hardware_version[64];
    char vendor[128];
    char register_url[256];
    char register_id[64];
    char product_secret[128];
    char cache_file_path[128]; /* where the SDK keeps the enrolment, a JSON object with the member "secret" */
    char log_file_path[128];
    const struct property_row *property_map;
    const struct service_row *service_map;
    const struct other_handle_table *other_handle;
    void *reserved_pointer;
    tebra_upgrade_callback upgrade;
    uint64_t reserved1;
    int32_t interval;
    uint8_t reserved2[12];
    char area_code[8];
    uint64_t reserved3;
};

/* Gives the SDK the device secret, before start_sdk; the text is copied. Returns 0. */
int set_device_secret(const char *secret);

/* Runs the init slots, then opens the link in the background. 0 when started, -1 when the record cannot be
 * used. */
int start_sdk(struct global_config *config);

/* 1 while the link to the cloud is up, else 0. */
int get_connect_state(void);

/* Sets the intervals, in seconds, of the SDK's own firmware check. Returns 0. */
int update_checkTime(int ota_check_interval, int min_interval, int max_interval);

/* Posts one property document / one event with its fields / firmware progress in percent. The texts are
 * copied. 0 when handed to the link, -1 when there is none. */
int TEBRA_SDK_PostProperty(const char *json);
int TEBRA_SDK_PostEvent(const char *name, const char *json);
int TEBRA_SDK_PostUpgress(int percent);

/* Answers a service call with the handle and id that its handler was given. 0, or -1 when no such call is
 * open. */
int TEBRA_SDK_Handle_Response(uint32_t call_handle, uint32_t request_id, int code, const char *json,
                              const char *service);

#ifdef __cplusplus
}

static_assert(sizeof(property_row) == 56 && sizeof(service_row) == 24 && sizeof(other_handle_table) == 56);
static_assert(sizeof(global_config) == 1296);
static_assert(offsetof(global_config, serial_number) == 64 && offsetof(global_config, mac) == 192);
static_assert(offsetof(global_config, software_version) == 256 &&
              offsetof(global_config, hardware_version) == 320);
static_assert(offsetof(global_config, vendor) == 384 && offsetof(global_config, register_url) == 512);
static_assert(offsetof(global_config, register_id) == 768 && offsetof(global_config, product_secret) == 832);
static_assert(offsetof(global_config, cache_file_path) == 960 &&
              offsetof(global_config, log_file_path) == 1088);
static_assert(offsetof(global_config, property_map) == 1216 && offsetof(global_config, service_map) == 1224);
static_assert(offsetof(global_config, other_handle) == 1232 && offsetof(global_config, upgrade) == 1248);
static_assert(offsetof(global_config, interval) == 1264 && offsetof(global_config, area_code) == 1280);
#endif

#endif /* TEBRA_SDK_H */
