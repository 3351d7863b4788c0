// SPDX-License-Identifier: Apache-2.0
// The agent's own HTTPS requests: signed JSON POST. Servers are verified only where the build names a CA file
// (ca_file.h). Without one, whoever answers in a server's place is believed: an image's digest then guards
// against damage, not against forgery, since it comes from the same server.
#pragma once

#include <cstddef>
#include <cstdint>

#include "https/transfer.h"

// What requests are made with and what the last check was answered. Written by the upgrade thread only.
struct upgrade_request_context {
    char sn[16];
    char mac[32];
    char manufacturer[8];
    char hardware_version[64];
    char firmware_version[64];
    char area_code[8];
    char product_key[16];
    char device_secret[128];
    char check_url[256];
    char progress_url[256];
    struct response_fields {
        int64_t id;
        char version[128];
        int64_t size; // bytes
        char md5[33];
        char description[256];
        char strategy[32];
        char firmware_name[128];
        char url[256];
    } response;
};
extern upgrade_request_context upgrade_request;

// Fills identity and addresses from the router's vrop.fota; without an answer the context stays as it is.
void load_upgrade_request();

// Signed JSON POST under the request context; `timestamp`, seconds since the epoch, is the one in the body.
// The reply buffer, which the caller has zeroed, keeps the last piece of the reply at its start. Returns the
// libcurl code; 2 when no request was made. Called by the upgrade thread alone.
int curl_post(const char *body, size_t length, ReplyBuffer *reply, const char *address, long timestamp);
