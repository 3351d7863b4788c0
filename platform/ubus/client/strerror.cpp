// SPDX-License-Identifier: Apache-2.0
#include <cstdio>

extern "C" {
#include <libubus.h>
}

const char *ubus_strerror(int error) {
    static const char *const TEXTS[] = {"Success",
                                        "Invalid command",
                                        "Invalid argument",
                                        "Method not found",
                                        "Not found",
                                        "No response",
                                        "Permission denied",
                                        "Request timed out",
                                        "Operation not supported",
                                        "Unknown error",
                                        "Connection failed",
                                        "Out of memory",
                                        "Parsing message data failed",
                                        "System error"};
    static_assert(ARRAY_SIZE(TEXTS) == __UBUS_STATUS_LAST);
    static thread_local char unknown[32];
    if (error >= 0 && error < __UBUS_STATUS_LAST) return TEXTS[error];
    snprintf(unknown, sizeof(unknown), "Unknown error: %d", error);
    return unknown;
}
