/* SPDX-License-Identifier: Apache-2.0 */
/* The process's one event loop. All calls belong to the thread that runs it, but for uloop_init, which
 * ubus_connect calls from any thread. */
#ifndef LIBUBOX_ULOOP_H
#define LIBUBOX_ULOOP_H

#include <stdbool.h>
#include <stdint.h>

#include "list.h"

#define ULOOP_READ (1 << 0)
#define ULOOP_WRITE (1 << 1)
#define ULOOP_EDGE_TRIGGER (1 << 2) /* served level-triggered */
#define ULOOP_BLOCKING (1 << 3)     /* leave the descriptor's blocking mode alone */
#define ULOOP_ERROR_CB (1 << 6)     /* keep calling the callback after an error */

struct uloop_fd;

typedef void (*uloop_fd_handler)(struct uloop_fd *u, unsigned int events);

struct uloop_fd {
    uloop_fd_handler cb;
    int fd;
    bool eof;
    bool error;
    bool registered;
    uint8_t flags;
};

extern bool uloop_cancelled;

/* Ignores SIGPIPE, and takes SIGINT, SIGTERM and SIGCHLD over where their disposition is the default. May be
 * called again. 0 or -1. */
int uloop_init(void);
/* Runs until uloop_end, a SIGINT or SIGTERM that uloop took over, or `timeout` milliseconds (negative: no
 * limit). Returns 0 or the number of the signal. */
int uloop_run_timeout(int timeout);
/* Closes the loop and restores the signal dispositions. */
void uloop_done(void);

/* Adds a descriptor, or changes its flags; without READ and WRITE removes it. 0 or -1. */
int uloop_fd_add(struct uloop_fd *sock, unsigned int flags);
/* 0, or -1 if it was not registered. */
int uloop_fd_delete(struct uloop_fd *sock);

static inline void uloop_end(void) {
    uloop_cancelled = true;
}

static inline int uloop_run(void) {
    return uloop_run_timeout(-1);
}

#endif
