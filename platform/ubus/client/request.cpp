// SPDX-License-Identifier: Apache-2.0
#include "request.h"

#include <poll.h>

namespace {
// `status` is what a waiting call returns, `told` what the callback of an asynchronous request gets.
void end_request(ubus_request *req, int status, int told) {
    list_del_init(&req->list);
    req->status_msg = true;
    req->status_code = status;
    if (req->complete_cb) req->complete_cb(req, told);
}

ubus_request *open_request(ubus_context *ctx, const wire::Header &header) {
    list_head *node;
    list_for_each(node, &ctx->requests) {
        ubus_request *req = list_entry(node, ubus_request, list);
        if (req->seq == header.seq && req->peer == header.peer) return req;
    }
    return nullptr;
}

void deliver_data(ubus_request *req, const wire::Message &message) {
    if (req->raw_data_cb) {
        req->raw_data_cb(req, UBUS_MSG_DATA, const_cast<blob_attr *>(message.body()));
        return;
    }
    const blob_attr *data = wire::Attributes(message.body()).at[UBUS_ATTR_DATA];
    if (data && req->data_cb) req->data_cb(req, UBUS_MSG_DATA, const_cast<blob_attr *>(data));
}

void deliver_status(ubus_request *req, const wire::Message &message) {
    wire::Attributes attributes(message.body());
    int status = UBUS_STATUS_INVALID_ARGUMENT;
    if (attributes.at[UBUS_ATTR_STATUS]) status = static_cast<int>(attributes.number(UBUS_ATTR_STATUS));
    end_request(req, status, status);
}

void deliver(ubus_context *ctx, const wire::Message &message) {
    if (message.header.version != UBUS_MSG_VERSION) return;
    ubus_request *req = open_request(ctx, message.header);
    if (!req) return;
    if (message.header.type == UBUS_MSG_DATA)
        deliver_data(req, message);
    else if (message.header.type == UBUS_MSG_STATUS)
        deliver_status(req, message);
}

void end_all(ubus_context *ctx, int status) {
    while (!list_empty(&ctx->requests))
        end_request(list_first_entry(&ctx->requests, ubus_request, list), status, UBUS_STATUS_TIMEOUT);
}

void tell_loss(ubus_context *ctx) {
    end_all(ctx, UBUS_STATUS_CONNECTION_FAILED);
    if (!ctx->connection || ctx->connection->loss_told) return;
    ctx->connection->loss_told = true;
    if (ctx->connection_lost) ctx->connection_lost(ctx);
}
} // namespace

int start_request(ubus_context *ctx, ubus_request *req, uint8_t type, uint32_t peer,
                  const Deadline &deadline) {
    *req = {};
    INIT_LIST_HEAD(&req->list);
    req->ctx = ctx;
    req->fd = -1;
    req->peer = peer;
    req->seq = ++ctx->request_seq;
    return send_message(ctx, {UBUS_MSG_VERSION, type, req->seq, peer}, deadline);
}

int finish_request(ubus_context *ctx, ubus_request *req, const Deadline &deadline) {
    ubus_complete_request_async(ctx, req);
    while (!req->status_msg) {
        wire::Message message;
        if (deadline.over())
            end_request(req, UBUS_STATUS_TIMEOUT, UBUS_STATUS_TIMEOUT);
        else if (next_message(ctx, &message))
            deliver(ctx, message);
        else if (ctx->sock.eof)
            tell_loss(ctx);
        else if (wait_socket(ctx, POLLIN, deadline))
            read_socket(ctx);
    }
    return req->status_code;
}

void serve_socket(ubus_context *ctx) {
    if (!ctx->connection) return;
    read_socket(ctx);
    wire::Message message;
    while (next_message(ctx, &message))
        deliver(ctx, message);
    if (ctx->sock.eof) tell_loss(ctx);
}

void ubus_complete_request_async(ubus_context *ctx, ubus_request *req) {
    if (list_empty(&req->list) && !req->status_msg) list_add_tail(&req->list, &ctx->requests);
}
