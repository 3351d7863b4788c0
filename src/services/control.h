// SPDX-License-Identifier: Apache-2.0
// The services that act on the router as a whole. Every answer is "{}". For the service table: called by the
// SDK from any thread; the two arguments in the middle are not used.
#pragma once

#include <cstdint>

// Asks the daemon to restart the router. Always 200, before it goes down.
int reboot_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"resetType"}: what the daemon is to forget, in its own numbers; 0 when absent, and its own choice
// without a request. 200, or 400 when that is no number or the daemon refuses; no answer to what is no JSON.
int recovery_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"user", "oldPwd", "newPwd"}, 63 bytes kept of each. 200; 400 when one is missing, 402 when the
// password is not changed (account.h); no answer without a request or to what is no JSON.
int updatePwd_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Drops the kernel's page cache. 200, or 400 when the command fails.
int tuningMemory_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"diskPath"}, 127 bytes kept; absent or without a request the daemon chooses the USB disk that it
// detaches. 200, or 400 when that is no text or the daemon refuses; no answer to what is no JSON.
int cutUsb_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
