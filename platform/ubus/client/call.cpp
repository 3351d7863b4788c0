// SPDX-License-Identifier: Apache-2.0
#include "request.h"

namespace {
int send_lookup(ubus_context *ctx, ubus_request *req, const char *path, const Deadline &deadline) {
    blob_buf *out = &ctx->connection->out;
    if (blob_buf_init(out, 0) != 0 || (path && !blob_put_string(out, UBUS_ATTR_OBJPATH, path)))
        return UBUS_STATUS_NO_MEMORY;
    return start_request(ctx, req, UBUS_MSG_LOOKUP, 0, deadline);
}

struct LookupTarget {
    ubus_lookup_handler_t cb;
    void *priv;
};

// An object needs path, id and type to be told.
void on_lookup_data(ubus_request *req, int, blob_attr *message) {
    wire::Attributes attributes(message);
    if (!attributes.at[UBUS_ATTR_OBJPATH] || !attributes.at[UBUS_ATTR_OBJID] ||
        !attributes.at[UBUS_ATTR_OBJTYPE])
        return;
    ubus_object_data object{attributes.number(UBUS_ATTR_OBJID), attributes.number(UBUS_ATTR_OBJTYPE),
                            blob_get_string(attributes.at[UBUS_ATTR_OBJPATH]),
                            const_cast<blob_attr *>(attributes.at[UBUS_ATTR_SIGNATURE])};
    const auto *target = static_cast<const LookupTarget *>(req->priv);
    target->cb(req->ctx, &object, target->priv);
}

void take_id(ubus_context *, ubus_object_data *object, void *id) {
    *static_cast<uint32_t *>(id) = object->id;
}

int send_invoke(ubus_context *ctx, ubus_request *req, uint32_t object, const char *method,
                const blob_attr *msg, const Deadline &deadline) {
    if (!method || !ctx->connection) return UBUS_STATUS_INVALID_ARGUMENT;
    blob_buf *out = &ctx->connection->out;
    bool built = blob_buf_init(out, 0) == 0 && blob_put_u32(out, UBUS_ATTR_OBJID, object) &&
                 blob_put_string(out, UBUS_ATTR_METHOD, method) &&
                 blob_put(out, UBUS_ATTR_DATA, msg ? blob_data(msg) : nullptr,
                          msg ? static_cast<unsigned>(blob_len(msg)) : 0);
    // What does not fit into a buffer is longer than what may be sent.
    return built ? start_request(ctx, req, UBUS_MSG_INVOKE, object, deadline) : UBUS_STATUS_INVALID_ARGUMENT;
}
} // namespace

int ubus_lookup(ubus_context *ctx, const char *path, ubus_lookup_handler_t cb, void *priv) {
    if (!ctx->connection) return UBUS_STATUS_INVALID_ARGUMENT;
    const Deadline deadline(0);
    ubus_request req;
    int status = send_lookup(ctx, &req, path, deadline);
    if (status != UBUS_STATUS_OK) return status;
    LookupTarget target{cb, priv};
    req.raw_data_cb = on_lookup_data;
    req.priv = &target;
    return finish_request(ctx, &req, deadline);
}

int ubus_lookup_id(ubus_context *ctx, const char *path, uint32_t *id) {
    return ubus_lookup(ctx, path, take_id, id);
}

int ubus_invoke_async_fd(ubus_context *ctx, uint32_t obj, const char *method, blob_attr *msg,
                         ubus_request *req, int fd) {
    if (fd >= 0) return UBUS_STATUS_NOT_SUPPORTED;
    return send_invoke(ctx, req, obj, method, msg, Deadline(0));
}

int ubus_invoke_fd(ubus_context *ctx, uint32_t obj, const char *method, blob_attr *msg,
                   ubus_data_handler_t cb, void *priv, int timeout, int fd) {
    if (fd >= 0) return UBUS_STATUS_NOT_SUPPORTED;
    Deadline deadline(timeout);
    ubus_request req;
    int status = send_invoke(ctx, &req, obj, method, msg, timeout > 0 ? deadline : Deadline(0));
    if (status != UBUS_STATUS_OK) return status;
    req.data_cb = cb;
    req.priv = priv;
    return finish_request(ctx, &req, deadline);
}
