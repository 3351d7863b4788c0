// SPDX-License-Identifier: Apache-2.0
// Replies are most of what the agent handles, and writing each out as text only to parse it again took longer
// than everything else that is done with it. So the usual ones are turned into a document directly; what
// needs a second thought takes the way over the text.
#include "core/bus_reply.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <json-c/linkhash.h>

#include "core/bus_library.h"

namespace bus {

namespace {

constexpr int MEMBERS_MAX = 256; // that a table is made for before they are known to be good
constexpr int DEPTH_MAX = 8;     // of what is turned directly, well below the parser's own bound

struct FreeText {
    void operator()(char *text) const { free(text); }
};

JsonRoot by_text(blob_attr *message) {
    const std::unique_ptr<char, FreeText> text(blobmsg_format_json(message, true));
    return JsonRoot(text ? json_tokener_parse(text.get()) : nullptr);
}

bool add_members(json_object *container, blob_attr *message, int depth);

// An object for the members of `message`. Its hash table gets its size at once: to grow a few times on the
// way takes longer than to fill it.
json_object *new_object(blob_attr *message) {
    json_object *object = json_object_new_object();
    if (object == nullptr) return nullptr;
    int members = 0;
    blob_attr *attribute = nullptr;
    size_t left = 0;
    blobmsg_for_each_attr(attribute, message, left) members++;
    if (members > JSON_OBJECT_DEF_HASH_ENTRIES / 2)
        lh_table_resize(json_object_get_object(object), 2 * std::min(members, MEMBERS_MAX));
    return object;
}

bool nested(json_object *created, blob_attr *attribute, int depth, JsonRoot *value) {
    value->reset(created);
    return created != nullptr && depth < DEPTH_MAX && add_members(created, attribute, depth + 1);
}

// False when the attribute is not one of the usual ones, or memory ran out.
bool convert(blob_attr *attribute, int depth, JsonRoot *value) {
    switch (blobmsg_type(attribute)) {
    case BLOBMSG_TYPE_TABLE:
        return nested(new_object(attribute), attribute, depth, value);
    case BLOBMSG_TYPE_ARRAY:
        return nested(json_object_new_array(), attribute, depth, value);
    case BLOBMSG_TYPE_STRING:
        value->reset(json_object_new_string(blobmsg_get_string(attribute)));
        break;
    case BLOBMSG_TYPE_INT8:
        value->reset(json_object_new_boolean(blobmsg_get_bool(attribute)));
        break;
    case BLOBMSG_TYPE_INT16:
    case BLOBMSG_TYPE_INT32:
    case BLOBMSG_TYPE_INT64:
        value->reset(json_object_new_int64(blobmsg_cast_s64(attribute)));
        break;
    default:
        return false;
    }
    return *value != nullptr;
}

// Adds a value to an object, under its name, or to an array; takes it over only then.
bool add_value(json_object *container, const char *name, JsonRoot value) {
    const int added = json_object_is_type(container, json_type_array)
                          ? json_object_array_add(container, value.get())
                          : json_object_object_add(container, name, value.get());
    if (added != 0) return false;
    (void)value.release();
    return true;
}

bool add_members(json_object *container, blob_attr *message, int depth) {
    const bool named = !json_object_is_type(container, json_type_array);
    blob_attr *attribute = nullptr;
    size_t left = 0;
    blobmsg_for_each_attr(attribute, message, left) {
        if (!blobmsg_check_attr_len(attribute, named, left)) return false;
        JsonRoot value;
        if (!convert(attribute, depth, &value)) return false;
        if (!add_value(container, blobmsg_name(attribute), std::move(value))) return false;
    }
    return true;
}

} // namespace

JsonRoot reply_document(blob_attr *message) {
    JsonRoot document(blob_is_extended(message) ? nullptr : new_object(message));
    if (document && add_members(document.get(), message, 0)) return document;
    return by_text(message);
}

} // namespace bus
