// SPDX-License-Identifier: Apache-2.0
// What the storage service says of itself in /aptmp/ecm.status: key=value text, each value one decimal digit.
// Its first 128 bytes are read. Any thread.
#pragma once

// Both give 0 when the file was read, with the digits of the keys that it has (the others stay as they were);
// -1, logged in these functions' names, when it cannot be opened or is empty.
int get_natType(int *nat_type, int *upnp); // "nat_type=", "upnp="
int get_ecm_status(int *connect_status);   // "connect_status="
