// SPDX-License-Identifier: Apache-2.0
// Whether the router has its Internet connection.
#pragma once

// 1 when the WAN is up, else 0, also when the daemon does not answer. Any thread.
int get_networkStatus();
