// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

namespace bench {

// Clears the flag when that many events and progress values have been posted from now on. One thread.
void clear_after_events(long events, std::atomic<int> *flag);

} // namespace bench
