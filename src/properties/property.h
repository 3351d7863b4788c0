// SPDX-License-Identifier: Apache-2.0
// What every property module does: check the arguments, parse and take the request's member, build the
// document, copy it out or post it, compare with what was posted last. A module describes itself in one
// Property and its slots call the functions below, which log in the slot's name.
//
// Threads: the SDK calls slots from several threads; each function holds the property's lock while it works,
// so one operation of a module works at a time and its record needs no other care. The SDK itself is called
// without the lock: it may hold one of its own while it calls a slot. Nobody waits for another's post either:
// who comes meanwhile leaves the newer document to the thread that posts, so that it is the last word.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>

#include <json-c/json.h>

#include "core/log.h"

// What waits to be posted, under the property's lock.
struct Outbox {
    bool posting = false; // a thread is at it
    bool full = false;
    std::string text;
};

struct Property {
    const char *name;  // the member that holds the document and the request
    const char *start; // what the start lines call the module, joiner included: "wifiInfo "
    std::mutex *lock;
    // Refreshes the record and adds the property to an empty document. 0, or -1 when it cannot.
    int (*fill)(json_object *document);

    // Requests.
    json_type request_type = json_type_object;
    const char *parse_tag = "JsonStrToken";
    const char *parse_failed = "JsonStr Token fail";
    bool parse_failed_shows_request = false;
    const char *member_missing = "Json Get Obj fail"; // null: only the console says so
    const char *request_line =
        nullptr; // logged in front of the request's text, which is not logged when null

    // Documents and reports.
    const char *create_failed = "create JsonObj fail";
    const char *changed = nullptr; // logged in front of a text that is about to be posted
    size_t report_size = 0;        // a report's text is cut to one character less
    char *last_sent = nullptr;     // the text posted last
    size_t last_sent_size = 0;
    mutable Outbox outbox = {};
};

// What the set slot was called with.
struct SetCall {
    const char *context;
    const char *value;
    const char *reply;
    int reply_length;
};

// Applies the request's member, which has the property's request_type; `context` is the set's first argument.
// Returns what the slot returns.
using Apply = int (*)(json_object *member, const char *context);

// The init slot: the start line, and the module's own reset (may be null) under the lock. Returns 0.
int property_init(const Property &property, void (*reset)(), LogSite site = LogSite::here());

// The set slot. -1 for missing arguments, a text that is not JSON, or no member of the right type; else what
// `apply` returned.
int property_set(const Property &property, const SetCall &call, Apply apply, LogSite site = LogSite::here());

// The get slot: the document's text, cut to length - 1 characters. 0, or -1 for missing arguments or no
// document.
int property_get(const Property &property, const char *context, char *output, int length,
                 LogSite site = LogSite::here());

// The connect-ok hook: posts the document. 0 or -1.
int property_post(const Property &property, LogSite site = LogSite::here());

// The report slot: posts the document when its text differs from the one posted last. 0 or -1.
int property_report(const Property &property, LogSite site = LogSite::here());
