// SPDX-License-Identifier: Apache-2.0
// "remoteCap": packets of an interface, captured with tcpdump and uploaded.
#pragma once

#include <cstdint>

// Request {"time": 1 to 300 seconds, "interface", "filter" (a pcap-filter(7) expression, at most 255 bytes,
// optional), "uploadUrl" (at most 511), "url" (quoted as JSON at most CAPTURE_ADDRESS_MAX, which is what its
// event carries)}. Answers, after half a second and at most ten more for the names in a filter, 200 "{}" when
// the capture runs, 409 "{}" from another's beginning until its file is sent, else 400 "{}". What is
// captured, at most 8 MiB of whole packets, appears as CAPTURE_FILE, mode 0600, when it has ended; the client
// status thread then sends it to "uploadUrl" once and removes it, and the "RemoteCapSuccess" event tells of
// "url" when that succeeded.
int remotecap_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

inline constexpr char CAPTURE_FILE[] = "/aptmp/qvtk_capture.pcap";
