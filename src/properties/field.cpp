// SPDX-License-Identifier: Apache-2.0
#include "properties/field.h"

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

bool is_given(const Field &field, const void *record) {
    if (field.kind == FieldKind::Text) return *text_of(field, record) != '\0';
    const int32_t value = integer_of(field, record);
    return value != -1 && (field.to_text == nullptr || field.to_text(value) != nullptr);
}

int add_member(const Field &field, const void *record, json_object *object) {
    if (field.kind == FieldKind::Text)
        return JsonSetStr(object, nullptr, field.cloud, text_of(field, record));
    const int32_t value = integer_of(field, record);
    return field.kind == FieldKind::Switch ? JsonSetBool(object, nullptr, field.cloud, value != 0)
                                           : JsonSetInt64(object, nullptr, field.cloud, value);
}

void add_member(const Field &field, const void *record, BusMessage *message) {
    if (field.kind == FieldKind::Text)
        message->text(field.daemon, text_of(field, record));
    else if (field.to_text != nullptr)
        message->text(field.daemon, field.to_text(integer_of(field, record)));
    else
        message->integer(field.daemon, integer_of(field, record));
}

} // namespace

int32_t request_integer(json_object *request, const char *key) {
    int32_t value = -1;
    if (JsonReadInt(request, key, &value)) return value;
    json_object *member = nullptr;
    JsonGetObj(request, key, &member);
    const bool counts = json_object_is_type(member, json_type_double) != 0 ||
                        json_object_is_type(member, json_type_boolean) != 0;
    return counts ? json_object_get_int(member) : -1;
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
        if (field.daemon == nullptr) continue;
        JsonGetObj(reply, field.daemon, &member);
        if (field.from_text != nullptr)
            *integer_of(field, record) = field.from_text(json_object_get_string(member));
        else if (member != nullptr && field.kind == FieldKind::Text)
            copy_text(static_cast<char *>(record) + field.offset, field.width,
                      json_object_get_string(member));
        else if (member != nullptr)
            *integer_of(field, record) = json_object_get_int(member);
    }
}

int write_document(Fields fields, const void *record, json_object *document, const char *path) {
    json_object *object = JsonCreatePath(document, path);
    int written = 1;
    for (const Field &field : fields)
        written &= add_member(field, record, object);
    return written == 1 ? 0 : -1;
}

void write_message(Fields fields, const void *record, BusMessage *message) {
    for (const Field &field : fields)
        if (field.daemon != nullptr) add_member(field, record, message);
}

int write_given_document(Fields fields, const void *record, json_object *object) {
    int count = 0;
    for (const Field &field : fields) {
        if (!is_given(field, record)) continue;
        if (add_member(field, record, object) != 1) return -1;
        count++;
    }
    return count;
}

int write_given_message(Fields fields, const void *record, BusMessage *message) {
    int count = 0;
    for (const Field &field : fields) {
        if (field.daemon == nullptr || !is_given(field, record)) continue;
        add_member(field, record, message);
        count++;
    }
    return count;
}
