// SPDX-License-Identifier: Apache-2.0
// The services that act on the router as a whole. Every answer is "{}". For the service table: called by the
// SDK from any thread; the two arguments in the middle are not used.
#pragma once

#include <cstdint>

int reboot_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int recovery_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int updatePwd_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int tuningMemory_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int cutUsb_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
