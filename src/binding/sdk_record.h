// SPDX-License-Identifier: Apache-2.0
// Fills the record that the SDK is started with, and the callbacks in it.
#pragma once

#include "tebra_sdk.h"

extern struct other_handle_table g_other_handle;

// Fills global_config from the bus, register_config and the tables; returns its address. Start-up only.
struct global_config *init_config();

// Callbacks of the SDK, on its threads.
int device_online(); // starts the report of an upgrade's outcome
int dev_upgrade2(void *, void *, void *, const char *url, const char *md5, const char *current_version,
                 const char *strategy);
int user_chk_reply(const char *product_key, const char *device_name, const char *url, const char *md5,
                   const char *current_version, int has_new, const char *strategy); // in no table
int dev_upgrade();                                                                  // -1; nothing calls it
