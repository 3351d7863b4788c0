// SPDX-License-Identifier: Apache-2.0
// "outdiskFormat": formats an external disk.
#pragma once

#include <cstdint>

// Request {"diskPath"}: a path that diskCheck lists. Answers 200 "{}" when the work has begun, 409 "{}" while
// another disk is being formatted, else 400 "{}"; only while get_format_flag is "1". The daemon's "format"
// begins the work, and its "get" is asked once a second until the work is done, for at most ten minutes; then
// the "outFormatFeedback" event says 0 good, 1 bad.
int outdiskFormat_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
