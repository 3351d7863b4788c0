// SPDX-License-Identifier: Apache-2.0
// Body, signature and address of the requests that the helper programs send. For one thread of a process that
// has nothing else running: loading the registration record also sets what belongs to the process.
#pragma once

#include <json-c/json.h>

#include "core/log.h"
#include "core/registration.h"

enum HeadResult {
    HEAD_OK = 0,
    HEAD_SIGN_FAILED = 100001, // registration or signature failed; no line in the upgrade log
    HEAD_JSON_FAILED = 100002, // JSON text could not be made or read
    HEAD_NO_LOG = 100003,      // upgrade log cannot be opened
    HEAD_BAD_ARGUMENT = 100004,
    HEAD_NO_MEMBER = 100005,
    HEAD_EMPTY_MEMBER = 100006,
    HEAD_NO_OBJECT = 100007, // JSON object could not be made
};

// Who sends a request, and when.
struct RequestSender {
    register_config_record registration;
    char name[32];     // the serial number or, without one, the MAC's twelve digits
    char version[128]; // of the running software, when the object tells it
    long timestamp;    // seconds since the epoch
};
// Loads the sender, its identity from the bus object, and signs for now. Returns a HeadResult.
int sign_request(const char *identity_object, RequestSender *sender, char *sign, int sign_size,
                 LogSite site = LogSite::here());

// The caller's buffers, and how many bytes each holds; the last is optional.
struct RequestBuffers {
    char *body, *sign, *url;
    int body_size, sign_size, url_size;
};
// What differs between the requests.
struct RequestKind {
    const char *identity_object; // on the bus
    char (register_config_record::*address)[128];
    int (*add_members)(json_object *body,
                       const RequestSender &sender); // behind the common ones; a HeadResult
};
// Fills the buffers, cutting what does not fit. Returns a HeadResult; nothing is written for bad arguments.
int build_request(const RequestBuffers &buffers, const RequestKind &kind, LogSite site = LogSite::here());

// The request for the time-control settings: body, signature and address, as build_request makes them.
int post_timecontrol_head(char *body, char *sign, char *url, int body_size, int sign_size, int url_size);
