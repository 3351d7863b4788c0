// SPDX-License-Identifier: Apache-2.0
// The property "mesh": mesh networking on or off, and the router's role in it.
#pragma once

#include <cstdint>

struct MeshInfo {
    int32_t enable;
    int32_t unused[2];
    int32_t current_role;
    int32_t status;
};

struct MeshRequest {
    int32_t open;
    int32_t enable; // read, not applied
    int32_t role;
};

// Slots of the property table.
int mesh_init();
int mesh_set(const char *context, const char *value, char *reply, int reply_length);
int mesh_get(const char *context, char *output, int length);

// Posts a changed document; in no table.
int mesh_report();

// Fills the state from the daemon, which stays as it was when there is no answer. Always -1.
int get_mesh_config(MeshInfo *state);
// Applies a request. The daemon's result; -1 without "open".
int set_mesh_config(const MeshRequest *request);
int set_mesh_open(int enable, int role); // the daemon's result
int start_mesh();                        // asks the daemon to connect; its result
