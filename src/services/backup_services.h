// SPDX-License-Identifier: Apache-2.0
// The services that move the router's configuration to the cloud and back. Any thread; each call blocks until
// it has answered, which takes as long as its helper program.
#pragma once

#include <cstdint>

// Handlers of the service table; the two arguments in the middle are not used.
//
// Uploads the backup document (backup_read.h). 200 "{}" whether the cloud has got it or not, 400 "{}" when it
// cannot be made.
int tuningBackupCfg_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"backupUrl"}, 255 bytes kept. Fetches the document there, starts its restore, and sends progress
// events of 40, 80 and 100 percent on the way. 200 "{}" once the restore has begun; 400 "{}" when it cannot
// be fetched or begun, {"urltxt":"failed"} when the address cannot be left for the helper; no answer without
// a request or to what is no JSON. Waits with its download until the restore of another has ended.
int cfgReport_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

// Where a backup waits for its upload: "/tmp/MODEL_MAC_TIME.config", cut to size - 1 characters. A model's
// characters other than ASCII letters, digits, "+", "-" and "." become "-", and so does a dot in front. 0; -1
// for a null buffer, a size below 1, or when the router does not say who it is.
int set_fileName(char *name, int size);

// Tells the relay how far a restore has come.
void cfgReport_progress(int percent);

// Starts the restore on a thread of its own. 0, or -1 when there is no thread.
int cfgReport_threadStart();
void *cfgReport_proc(void *); // the thread's body
