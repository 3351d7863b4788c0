// SPDX-License-Identifier: Apache-2.0
// A property's fields as rows of a table: what the cloud and the daemon call a value and where the record
// keeps it. The same rows read a request, read the daemon, build the document and build the daemon's message.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <json-c/json.h>

#include "core/bus_message.h"

enum class FieldKind : uint8_t {
    Integer, // int32_t
    Switch,  // int32_t, a boolean in documents
    Text,    // a character array
};

struct Field {
    FieldKind kind;
    uint16_t offset; // in the record, bytes
    uint16_t width;  // of the array, for texts
    const char *cloud;
    const char *daemon; // null: the daemon has no member of its own for it
    // the daemon's text, null when it gives none, as the integer kept here; null: taken as it is
    int32_t (*from_text)(const char *text);
    // the other direction: the daemon's text for the integer, null when it has none; null: sent as it is
    const char *(*to_text)(int32_t value);
};

// FIELD(Integer, WifiRecord, wifi2g_open, "wifi2gOpen", "wifi24apenable" [, from_text [, to_text]])
#define FIELD(kind, record, member, cloud, daemon, ...)                                                      \
    Field {                                                                                                  \
        FieldKind::kind, offsetof(record, member), sizeof(record::member), cloud, daemon, __VA_ARGS__        \
    }

using Fields = std::span<const Field>;

// From a request: an integer that is absent, or is no number, becomes -1; a text is copied only when it is
// there.
void read_request(Fields fields, json_object *request, void *record);
// From the daemon's reply: only members that are there, but for rows that convert a text.
void read_daemon(Fields fields, json_object *reply, void *record);
// Into the document, in the rows' order, under `path`. 0, or -1 when memory ran out.
int write_document(Fields fields, const void *record, json_object *document, const char *path);
// Into a message, in the rows' order: rows that name a daemon member.
void write_message(Fields fields, const void *record, BusMessage *message);

// The same two for records that may lack values: what is not given (an integer of -1, a number that has no
// text, an empty text) is left out. The number of members written; the document's is -1 when memory ran out.
int write_given_document(Fields fields, const void *record, json_object *object);
int write_given_message(Fields fields, const void *record, BusMessage *message);

// One integer of a request: a number, a boolean, or a text that is a number; else -1.
int32_t request_integer(json_object *request, const char *key);
// One text of a request, borrowed: a text or a number; else null.
const char *request_text(json_object *request, const char *key);
