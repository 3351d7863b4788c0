// SPDX-License-Identifier: Apache-2.0
#include "core/json_path.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "core/handles.h"
#include "core/json_parse.h"
#include "core/text.h"

namespace {

constexpr size_t PATH_BUFFER = 240;

// Calls step(name) for each component of the path until it returns false; false then.
template <class Step>
bool walk(const char *path, Step step) {
    if (path != nullptr && *path != '\0' && strpbrk(path, ".") == nullptr && strlen(path) < PATH_BUFFER)
        return step(path); // most have one
    char names[PATH_BUFFER];
    copy_text(names, path);
    char *rest = nullptr;
    for (char *name = strtok_r(names, ".", &rest); name != nullptr; name = strtok_r(nullptr, ".", &rest))
        if (!step(name)) return false;
    return true;
}

bool is_object(json_object *value) {
    return json_object_is_type(value, json_type_object) != 0;
}

// The object's member, created as an empty object when it is missing; null when it is there and no object.
json_object *step_or_create(json_object *object, const char *name) {
    json_object *member = nullptr;
    if (json_object_object_get_ex(object, name, &member)) return is_object(member) ? member : nullptr;
    JsonRoot created(json_object_new_object());
    if (!created || json_object_object_add(object, name, created.get()) != 0) return nullptr;
    return created.release();
}

bool is_integer(json_object *value) {
    if (json_object_is_type(value, json_type_int)) return true;
    if (!json_object_is_type(value, json_type_string)) return false;
    const char *text = json_object_get_string(value);
    char *end = nullptr;
    strtoll(text, &end, 10);
    return end != text && *end == '\0';
}

json_object *member_of(json_object *object, const char *key) {
    json_object *member = object;
    if (key != nullptr) json_object_object_get_ex(object, key, &member);
    return member;
}

} // namespace

int JsonGetObj(json_object *document, const char *path, json_object **member) {
    json_object *found = document;
    bool complete =
        walk(path, [&](const char *name) { return json_object_object_get_ex(found, name, &found) != 0; });
    if (!complete) found = nullptr;
    if (member != nullptr) *member = found;
    return found != nullptr ? 1 : 0;
}

const char *JsonGetStr(json_object *document, const char *path) {
    json_object *member = nullptr;
    return JsonGetObj(document, path, &member) ? json_object_get_string(member) : nullptr;
}

int64_t JsonGetInt64(json_object *document, const char *path) {
    json_object *member = nullptr;
    return JsonGetObj(document, path, &member) ? json_object_get_int64(member) : -1;
}

bool JsonGetBool(json_object *document, const char *path) {
    json_object *member = nullptr;
    return JsonGetObj(document, path, &member) && json_object_get_boolean(member);
}

bool JsonReadInt(json_object *document, const char *path, int32_t *value) {
    json_object *member = nullptr;
    if (JsonGetObj(document, path, &member) == 0 || !is_integer(member)) return false;
    *value = json_object_get_int(member);
    return true;
}

int JsonSetStr(json_object *document, const char *path, const char *key, const char *value) {
    return JsonSetObj(document, path, key, JsonRoot(json_object_new_string(value == nullptr ? "" : value)));
}

int JsonSetInt64(json_object *document, const char *path, const char *key, int64_t value) {
    return JsonSetObj(document, path, key, JsonRoot(json_object_new_int64(value)));
}

int JsonSetBool(json_object *document, const char *path, const char *key, bool value) {
    return JsonSetObj(document, path, key, JsonRoot(json_object_new_boolean(value)));
}

int JsonSetObj(json_object *document, const char *path, const char *key, json_object *value) {
    if (document == nullptr || key == nullptr || value == nullptr) return 0;
    json_object *object = JsonCreatePath(document, path);
    return is_object(object) && json_object_object_add(object, key, value) == 0 ? 1 : 0;
}

int JsonSetObj(json_object *document, const char *path, const char *key, JsonRoot value) {
    if (!value || JsonSetObj(document, path, key, value.get()) == 0) return 0;
    static_cast<void>(value.release()); // now the document's
    return 1;
}

int JsonAppend(json_object *array, JsonRoot value) {
    if (!value || !json_object_is_type(array, json_type_array)) return 0;
    if (json_object_array_add(array, value.get()) != 0) return 0;
    static_cast<void>(value.release()); // now the array's
    return 1;
}

json_object *JsonCreatePath(json_object *document, const char *path) {
    json_object *object = document;
    if (document == nullptr || path == nullptr) return document;
    bool complete = is_object(document) && walk(path, [&](const char *name) {
                        object = step_or_create(object, name);
                        return object != nullptr;
                    });
    return complete ? object : nullptr;
}

std::string JsonPlainText(json_object *document, size_t limit) {
    const char *text =
        document == nullptr ? nullptr : json_object_to_json_string_ext(document, JSON_C_TO_STRING_PLAIN);
    return text == nullptr ? std::string() : std::string(text, strnlen(text, limit));
}

std::string JsonQuote(const char *text, size_t most) {
    std::string rest = utf8_text(text);
    for (;; cut_between_characters(&rest, rest.size() - 1)) {
        JsonRoot value(json_object_new_string(rest.c_str()));
        const char *quoted = json_object_to_json_string_ext(value.get(), JSON_C_TO_STRING_NOSLASHESCAPE);
        if (!value || quoted == nullptr) return "\"\"";
        if (rest.empty() || strlen(quoted) <= most) return quoted;
    }
}

const char *_json_get_str(json_object *object, const char *key) {
    const char *text = json_object_get_string(member_of(object, key));
    return text == nullptr ? "" : text;
}

int _json_get_int(json_object *object, const char *key) {
    return json_object_get_int(member_of(object, key));
}

JsonRoot JsonParseUtf8(const char *text) {
    return text == nullptr ? nullptr : parse_document(text, JSON_TOKENER_VALIDATE_UTF8);
}
