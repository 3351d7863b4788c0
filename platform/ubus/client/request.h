// SPDX-License-Identifier: Apache-2.0
// Requests of a context: sent with a number, matched with what comes back.
#pragma once

#include "connection.h"

// Fills *req and sends the message built in ctx->connection->out. A status, as send_message() gives it.
int start_request(ubus_context *ctx, ubus_request *req, uint8_t type, uint32_t peer,
                  const Deadline &deadline);

// Waits for the end of a request. Its status; TIMEOUT; CONNECTION_FAILED.
int finish_request(ubus_context *ctx, ubus_request *req, const Deadline &deadline);

// Takes what has arrived on the socket and deals with its end.
void serve_socket(ubus_context *ctx);
