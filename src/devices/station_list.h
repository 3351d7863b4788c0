// SPDX-License-Identifier: Apache-2.0
// The poll of the clients: who came and who went since the last one. Of the status thread (runtime.h), which
// owns what the previous poll has left.
#pragma once

// Compares the clients with those of the previous poll: announces who came, closes who went. 0, or -1 when
// the previous poll's list cannot be read.
int check_staList();
// Forgets the previous poll.
void clear_backupSta();
