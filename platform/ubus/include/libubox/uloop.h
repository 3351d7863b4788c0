/* SPDX-License-Identifier: Apache-2.0 */
/* The process's one event loop. All calls belong to the thread that runs it, but for uloop_init, which
 * ubus_connect calls from any thread. */
#ifndef LIBUBOX_ULOOP_H
#define LIBUBOX_ULOOP_H

#include <stdbool.h>
#include <stdint.h>
#include <sys/time.h>

#include "list.h"

#define ULOOP_READ (1 << 0)
#define ULOOP_WRITE (1 << 1)
#define ULOOP_EDGE_TRIGGER (1 << 2) /* served level-triggered */
#define ULOOP_BLOCKING (1 << 3)     /* leave the descriptor's blocking mode alone */
#define ULOOP_ERROR_CB (1 << 6)     /* keep calling the callback after an error */

struct uloop_fd;
struct uloop_timeout;

typedef void (*uloop_fd_handler)(struct uloop_fd *u, unsigned int events);
typedef void (*uloop_timeout_handler)(struct uloop_timeout *t);

struct uloop_fd {
    uloop_fd_handler cb;
    int fd;
    bool eof;
    bool error;
    bool registered;
    uint8_t flags;
};

/* Starts zeroed, with its callback. */
struct uloop_timeout {
    struct list_head list;
    bool pending;
    uloop_timeout_handler cb;
    struct timeval time; /* of the monotonic clock */
};

extern bool uloop_cancelled;

/* Ignores SIGPIPE, and takes SIGINT, SIGTERM and SIGCHLD over where their disposition is the default. May be
 * called again. 0 or -1. */
int uloop_init(void);
/* Runs until uloop_end, or a SIGINT or SIGTERM that uloop took over. Returns 0 or the number of the signal.
 */
int uloop_run(void);

/* Adds a descriptor, or changes its flags; without READ and WRITE removes it. 0 or -1. */
int uloop_fd_add(struct uloop_fd *sock, unsigned int flags);
/* 0, or -1 if it was not registered. */
int uloop_fd_delete(struct uloop_fd *sock);

/* Has the callback called once in so many milliseconds; again to set it anew. 0. */
int uloop_timeout_set(struct uloop_timeout *timeout, int msecs);
/* 0, or -1 if it was not pending. */
int uloop_timeout_cancel(struct uloop_timeout *timeout);

static inline void uloop_end(void) {
    uloop_cancelled = true;
}

#endif
