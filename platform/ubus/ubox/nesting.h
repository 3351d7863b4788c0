// SPDX-License-Identifier: Apache-2.0
// Where in its buffer an open container stands, as a cookie that survives the buffer's growth.
#pragma once

#include <cstddef>
#include <cstdint>

inline size_t offset_of(const blob_buf *buf, const blob_attr *attr) {
    return static_cast<size_t>(reinterpret_cast<const char *>(attr) - static_cast<const char *>(buf->buf));
}

// The cookie of the innermost open container. Never null: null is how opening one fails.
inline void *nest_cookie(const blob_buf *buf) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an offset
    return reinterpret_cast<void *>(offset_of(buf, buf->head) + 1);
}

inline size_t nest_offset(const void *cookie) {
    return reinterpret_cast<uintptr_t>(cookie) - 1;
}
