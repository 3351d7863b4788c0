// SPDX-License-Identifier: Apache-2.0
// Detached threads with a stack that holds TLS and the log's 16 KiB frames (musl's default does not).
#pragma once

#include <cstddef>

inline constexpr size_t THREAD_STACK_BYTES = 512 * 1024;

// Starts `body` with `argument` on a detached thread. 0, or the (positive) error number of pthread_create, in
// which case the argument is still the caller's.
int start_detached(void *(*body)(void *), void *argument);
