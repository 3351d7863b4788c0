/* SPDX-License-Identifier: Apache-2.0 */
/* The client side of the bus: connect, look up, call.
 *
 * One thread at a time per context; different contexts are independent of each other. Statuses are
 * UBUS_STATUS_... Time-outs are in milliseconds; 0 is no limit, a negative one ends the wait at once.
 *
 * A lost connection shows as CONNECTION_FAILED in the call that waits, and from then on as INVALID_ARGUMENT
 * with ctx->sock.eof set; nothing reconnects by itself. */
#ifndef LIBUBUS_H
#define LIBUBUS_H

#ifdef __cplusplus
extern "C" {
#endif

#include <stdbool.h>
#include <stdint.h>

#include "ubus_common.h"
#include "ubusmsg.h"
#include <libubox/blobmsg.h>
#include <libubox/list.h>
#include <libubox/uloop.h>

struct ubus_context;
struct ubus_request;

/* What a lookup found; lives as long as the callback. */
struct ubus_object_data {
    uint32_t id;
    uint32_t type_id;
    const char *path;
    struct blob_attr *signature; /* a table per method: name and type of each argument */
};

typedef void (*ubus_lookup_handler_t)(struct ubus_context *ctx, struct ubus_object_data *obj, void *priv);
/* `msg` is the DATA attribute, NULL-free and valid only inside the callback. */
typedef void (*ubus_data_handler_t)(struct ubus_request *req, int type, struct blob_attr *msg);
typedef void (*ubus_fd_handler_t)(struct ubus_request *req, int fd);
typedef void (*ubus_complete_handler_t)(struct ubus_request *req, int ret);

struct ubus_connection; /* the library's own part of a context */

struct ubus_context {
    struct list_head requests;
    struct uloop_fd sock;
    uint16_t request_seq;
    uint32_t local_id; /* for display */
    void (*connection_lost)(struct ubus_context *ctx);
    struct ubus_connection *connection;
};

struct ubus_request {
    struct list_head list;
    int status_code;
    bool status_msg;
    uint32_t peer;
    uint16_t seq;
    ubus_data_handler_t raw_data_cb; /* gets the whole message instead of its DATA */
    ubus_data_handler_t data_cb;
    ubus_fd_handler_t fd_cb; /* never called: descriptors are closed */
    ubus_complete_handler_t complete_cb;
    int fd;
    struct ubus_context *ctx;
    void *priv;
};

/* Connects to the broker at `path` (NULL: the default socket) and reads its greeting, for which it waits
 * until a signal interrupts. NULL on failure. Also runs uloop_init. */
struct ubus_context *ubus_connect(const char *path);
void ubus_free(struct ubus_context *ctx); /* NULL is allowed; open requests are forgotten */

const char *ubus_strerror(int error);

/* Calls `cb` for each object that the path (exact, prefix with '*', or NULL for all) names. Waits without
 * limit. A status. */
int ubus_lookup(struct ubus_context *ctx, const char *path, ubus_lookup_handler_t cb, void *priv);
/* The id of one object; left alone unless it was found. A status. */
int ubus_lookup_id(struct ubus_context *ctx, const char *path, uint32_t *id);

/* Sends a call and returns; msg may be NULL. Fills *req, which must live until it is completed or aborted;
 * the caller then sets its callbacks and completes it. A status. Descriptors are not sent: fd must be -1. */
int ubus_invoke_async_fd(struct ubus_context *ctx, uint32_t obj, const char *method, struct blob_attr *msg,
                         struct ubus_request *req, int fd);
/* Lets the request end whenever the connection is served. */
void ubus_complete_request_async(struct ubus_context *ctx, struct ubus_request *req);

/* Calls a method and waits, while the callbacks of other requests run; `cb` (or NULL) gets each DATA of the
 * answer. A status. */
int ubus_invoke_fd(struct ubus_context *ctx, uint32_t obj, const char *method, struct blob_attr *msg,
                   ubus_data_handler_t cb, void *priv, int timeout, int fd);

static inline int ubus_invoke(struct ubus_context *ctx, uint32_t obj, const char *method,
                              struct blob_attr *msg, ubus_data_handler_t cb, void *priv, int timeout) {
    return ubus_invoke_fd(ctx, obj, method, msg, cb, priv, timeout, -1);
}

static inline int ubus_invoke_async(struct ubus_context *ctx, uint32_t obj, const char *method,
                                    struct blob_attr *msg, struct ubus_request *req) {
    return ubus_invoke_async_fd(ctx, obj, method, msg, req, -1);
}

static inline void ubus_add_uloop(struct ubus_context *ctx) {
    uloop_fd_add(&ctx->sock, ULOOP_BLOCKING | ULOOP_READ);
}

#ifdef __cplusplus
}
#endif

#endif
