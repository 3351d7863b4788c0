/* SPDX-License-Identifier: Apache-2.0 */
/* Another libtebra_sdk.so with the same contract: writes what start_sdk was handed to the file $PROBE_RECORD,
 * as the 1296 bytes of the record and then the names of both tables, a line each, and returns $PROBE_RESULT.
 */
#include <stdio.h>
#include <stdlib.h>

#include "tebra_sdk.h"

static char secret[128];

int set_device_secret(const char *text) {
    snprintf(secret, sizeof(secret), "%s", text);
    return 0;
}

int start_sdk(struct global_config *config) {
    const char *path = getenv("PROBE_RECORD");
    FILE *file = path != NULL ? fopen(path, "wb") : NULL;
    if (file == NULL) return -1;
    fwrite(config, 1, 1296, file);
    fprintf(file, "secret %s\n", secret);
    for (const struct property_row *row = config->property_map; row->name != NULL; ++row)
        fprintf(file, "property %s %d%d%d%d%d%d\n", row->name, row->init != NULL, row->set != NULL,
                row->get != NULL, row->connectok_hook != NULL, row->reserved != NULL, row->report != NULL);
    for (const struct service_row *row = config->service_map; row->name != NULL; ++row)
        fprintf(file, "service %s\n", row->name);
    fprintf(file, "online %d\n", config->other_handle->device_online != NULL);
    fclose(file);
    const char *result = getenv("PROBE_RESULT");
    return result != NULL ? atoi(result) : 0;
}

int get_connect_state(void) {
    return 0;
}

int update_checkTime(int ota_check_interval, int min_interval, int max_interval) {
    (void)ota_check_interval, (void)min_interval, (void)max_interval;
    return 0;
}

int TEBRA_SDK_PostProperty(const char *json) {
    return json != NULL ? 0 : -1;
}

int TEBRA_SDK_PostEvent(const char *name, const char *json) {
    return name != NULL && json != NULL ? 0 : -1;
}

int TEBRA_SDK_PostUpgress(int percent) {
    (void)percent;
    return 0;
}

int TEBRA_SDK_Handle_Response(uint32_t call_handle, uint32_t request_id, int code, const char *json,
                              const char *service) {
    (void)call_handle, (void)request_id, (void)code, (void)json, (void)service;
    return -1;
}
