// SPDX-License-Identifier: Apache-2.0
// The nightly report of how long each client was connected, which the helper program sends.
#pragma once

// Body, signature and address of the report, as build_request makes them (https/helper_requests.h).
int post_runtime_head(char *body, char *sign, char *url, int body_size, int sign_size, int url_size);
