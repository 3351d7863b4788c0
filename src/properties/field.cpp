// SPDX-License-Identifier: Apache-2.0
#include "properties/field.h"

#include <algorithm>
#include <cstdlib>

#include "core/json_path.h"
#include "core/text.h"

namespace {

int32_t *integer_of(const Field &field, void *record) {
    return reinterpret_cast<int32_t *>(static_cast<char *>(record) + field.offset);
}

int32_t integer_of(const Field &field, const void *record) {
    return *reinterpret_cast<const int32_t *>(static_cast<const char *>(record) + field.offset);
}

const char *text_of(const Field &field, const void *record) {
    return static_cast<const char *>(record) + field.offset;
}

int32_t clamp_to_int32(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

bool reads_as_number(json_object *member) {
    switch (json_object_get_type(member)) {
    case json_type_int:
    case json_type_double:
    case json_type_boolean:
        return true;
    case json_type_string: {
        const char *text = json_object_get_string(member);
        char *end = nullptr;
        strtoll(text, &end, 10);
        return end != text && *end == '\0';
    }
    default:
        return false;
    }
}

} // namespace

int32_t request_integer(json_object *request, const char *key) {
    json_object *member = nullptr;
    if (JsonGetObj(request, key, &member) == 0 || !reads_as_number(member)) return -1;
    return clamp_to_int32(json_object_get_int64(member));
}

const char *request_text(json_object *request, const char *key) {
    json_object *member = nullptr;
    if (JsonGetObj(request, key, &member) == 0) return nullptr;
    switch (json_object_get_type(member)) {
    case json_type_null:
    case json_type_object:
    case json_type_array:
        return nullptr;
    default:
        return json_object_get_string(member);
    }
}

void read_request(Fields fields, json_object *request, void *record) {
    for (const Field &field : fields) {
        if (field.kind != FieldKind::Text) {
            *integer_of(field, record) = request_integer(request, field.cloud);
        } else if (const char *text = request_text(request, field.cloud)) {
            copy_text(static_cast<char *>(record) + field.offset, field.width, text);
        }
    }
}

void read_daemon(Fields fields, json_object *reply, void *record) {
    for (const Field &field : fields) {
        json_object *member = nullptr;
        if (field.daemon == nullptr || JsonGetObj(reply, field.daemon, &member) == 0) continue;
        if (field.kind == FieldKind::Text)
            copy_text(static_cast<char *>(record) + field.offset, field.width,
                      _json_get_str(member, nullptr));
        else if (field.from_text != nullptr)
            *integer_of(field, record) = field.from_text(_json_get_str(member, nullptr));
        else
            *integer_of(field, record) = _json_get_int(member, nullptr);
    }
}

int write_document(Fields fields, const void *record, json_object *document, const char *path) {
    json_object *object = JsonCreatePath(document, path);
    int written = 1;
    for (const Field &field : fields) {
        if (field.kind == FieldKind::Text)
            written &= JsonSetStr(object, nullptr, field.cloud, text_of(field, record));
        else if (field.kind == FieldKind::Switch)
            written &= JsonSetBool(object, nullptr, field.cloud, integer_of(field, record) != 0);
        else
            written &= JsonSetInt64(object, nullptr, field.cloud, integer_of(field, record));
    }
    return written == 1 ? 0 : -1;
}

void write_message(Fields fields, const void *record, BusMessage *message) {
    for (const Field &field : fields) {
        if (field.daemon == nullptr) continue;
        if (field.kind == FieldKind::Text)
            message->text(field.daemon, text_of(field, record));
        else
            message->integer(field.daemon, integer_of(field, record));
    }
}
