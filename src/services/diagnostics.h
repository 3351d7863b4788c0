// SPDX-License-Identifier: Apache-2.0
// The services that look into the router's Internet connection. For the service table: called by the SDK from
// any thread; the two arguments in the middle are not used.
#pragma once

#include <cstdint>

// Always 200 {"natType", "upnp"}: of the storage service's status file, 0 and false without one.
int nat_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// 200 {"networkStatus", "hcdnRegister"}: the WAN is connected, the storage service is registered. 400 "{}",
// or no answer, without memory.
int connectCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"times", "testUrl"}: how many pings, of a second each, are waited for; a host of at most 127
// bytes. 200 {"loss", "relay"}: percent, and the average delay in milliseconds as a text. 400 "{}" when a
// member is missing, the daemon refuses or leaves no result; no answer to null or what is no JSON. Blocks for
// `times` seconds and one more, 601 at most.
int ping_test_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
// Request {"testUrl", "dnsTimeout"}: a host of at most 127 bytes, milliseconds (100); both may be absent, and
// the text empty. 200 {"isIpv6", "dnsStatus"}, see get_ipv6_status and get_dnsDelay; no answer to null or
// what is no JSON. Blocks for two seconds.
int networkCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

// 1 when the WAN speaks IPv6, alone or beside IPv4, else 0. Any thread.
int get_dev_ipv6_type();
// 1 when the WAN speaks IPv6 and its IPv6 connection is down, else 0, also for a bridge. Any thread.
int get_ipv6_status();
