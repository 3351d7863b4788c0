// SPDX-License-Identifier: Apache-2.0
// What the storage service leaves in its status file, of which the first 128 bytes count. Any thread.
#pragma once

inline constexpr char STORAGE_STATUS_FILE[] = "/aptmp/ecm.status";

// Each value is the digit behind its key and stays as it was when there is none. 0; -1, which is logged, when
// the file cannot be opened or is empty.
int get_natType(int *nat_type, int *upnp);
int get_ecm_status(int *connect_status);
