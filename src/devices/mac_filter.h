// SPDX-License-Identifier: Apache-2.0
// The router's list of blocked MACs, spelled as the daemon spells them. A null or empty MAC is logged ("param
// is NULL") and gives -1. Any thread.
#pragma once

#include <cstdint>

// Whether the filter works, 0 or 1; -1 when the daemon does not answer.
int get_macFilter_switch();
// Whether the MAC is blocked: 1 by one of its entries, 0 when they are all switched off; -1 when it has none
// or the daemon does not answer.
int get_macFilter_enable(const char *mac);
// 0, and the index of the MAC's first entry; -1 without one.
int get_macFilter_index(const char *mac, int32_t *index);

// Has the filter work as a block list, unless it works. The daemon's result.
int start_macFilter();
// Adds an entry. The daemon's result.
int add_macFilter(int32_t enable, const char *mac);
// Deletes the MAC's entries. 0; -1 when it had none, which is logged, or the daemon refuses.
int delete_macFilter(const char *mac);
