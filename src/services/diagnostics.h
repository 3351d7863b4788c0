// SPDX-License-Identifier: Apache-2.0
// The services that look into the router's Internet connection.
#pragma once

#include <cstdint>

// For the service table: called by the SDK from any thread; the two arguments in the middle are not used.
// ping_test_call blocks for the request's time and a second, 601 seconds at most, networkCheck_call for two.
int nat_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int connectCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int ping_test_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
int networkCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

// 1 when the WAN speaks IPv6, alone or beside IPv4, else 0. Any thread.
int get_dev_ipv6_type();
// 1 when the WAN speaks IPv6 and its IPv6 connection is down, else 0, also for a bridge. Any thread.
int get_ipv6_status();
