// SPDX-License-Identifier: Apache-2.0
// What is measured; each function registers its benchmarks.
#pragma once

#include "comparison.h"

namespace bench {

void add_property_gets(); // every row of the property table that can be read
void add_many_stations(); // 128 client devices
void add_upgrade_check();
void add_relay();
void add_log();
void add_digests();

} // namespace bench
