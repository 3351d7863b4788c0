// SPDX-License-Identifier: Apache-2.0
// Members of JSON documents by dotted path ("wifi.ssid"): names are taken literally, no array indexing, no
// escaping, 239 characters at most; a null path is the document itself. A JSON null reads like a missing
// member. Any thread, as long as it alone uses the document.
#pragma once

#include <cstdint>
#include <string>

#include <json-c/json.h>

#include "core/handles.h"

// Readers. A missing path and a null document read alike.
int JsonGetObj(json_object *document, const char *path,
               json_object **member); // 1 and the (borrowed) member; 0, null
const char *JsonGetStr(json_object *document,
                       const char *path); // as text, lives with the document; null if missing
int64_t JsonGetInt64(json_object *document, const char *path); // -1 if missing
bool JsonGetBool(json_object *document, const char *path);     // false if missing
// True, and the value, when the member is an integer or a text that is one; what 32 bits cannot hold becomes
// the nearest that they can. Anything else is false and leaves the value alone.
bool JsonReadInt(json_object *document, const char *path, int32_t *value);

// Writers: create the missing objects along the path and add the value under the key. 1 on success; 0, with
// the document as before but for objects created on the way, when document or key is null or the path cannot
// be created.
int JsonSetStr(json_object *document, const char *path, const char *key,
               const char *value); // null is stored as ""
int JsonSetInt64(json_object *document, const char *path, const char *key, int64_t value);
int JsonSetBool(json_object *document, const char *path, const char *key, bool value);
// Takes the value over on success; on 0 it stays the caller's.
int JsonSetObj(json_object *document, const char *path, const char *key, json_object *value);
// The same, or the last element of an array, for a value that is released on 0.
int JsonSetObj(json_object *document, const char *path, const char *key, JsonRoot value);
int JsonAppend(json_object *array, JsonRoot value);

// The object that the path names, created where it is missing; null for a null document or when a member on
// the way is not an object.
json_object *JsonCreatePath(json_object *document, const char *path);

// The document as text without blanks, at most `limit` characters of it; "" for null or without memory.
std::string JsonPlainText(json_object *document, size_t limit = std::string::npos);
// The text as a JSON text, in quotation marks; null counts as "", what is not UTF-8 becomes U+FFFD.
// Without its last characters where it would be longer than `most` bytes, but never less than "\"\"".
std::string JsonQuote(const char *text, size_t most = std::string::npos);

// Readers of bus replies.
const char *_json_get_str(json_object *object,
                          const char *key);              // "" if missing; a null key: the object's own text
int _json_get_int(json_object *object, const char *key); // 0 if missing, 32 bits; a null key likewise

// A text as a document, owned by the caller. Null when it is no JSON, is nested too deeply, or is not UTF-8,
// which the daemon would keep as it is; null also for null.
JsonRoot JsonParseUtf8(const char *text);
