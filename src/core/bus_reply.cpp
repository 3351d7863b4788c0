// SPDX-License-Identifier: Apache-2.0
// Replies are most of what the agent handles, and writing each out as text only to parse it again took longer
// than everything else that is done with it. So the usual ones are turned into a document directly; what
// needs a second thought takes the way over the text.
#include "core/bus_reply.h"

#include <bitset>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "core/bus_library.h"

namespace bus {

namespace {

constexpr int DEPTH_MAX = 8; // of what is turned directly, well below the parser's own bound

struct FreeText {
    void operator()(char *text) const { free(text); }
};

JsonRoot by_text(blob_attr *message) {
    const std::unique_ptr<char, FreeText> text(blobmsg_format_json(message, true));
    return JsonRoot(text ? json_tokener_parse(text.get()) : nullptr);
}

bool add_members(json_object *container, blob_attr *message, int depth);

// The names that an object has so far: says of most that they are new, so that nobody needs to look for them.
class Names {
  public:
    // True only for a name that was not asked for before.
    bool is_new(const char *name) {
        const size_t length = strlen(name);
        const auto at = [&](size_t place) { return static_cast<size_t>(static_cast<uint8_t>(name[place])); };
        const size_t mark = length == 0 ? 0 : length * 31 + at(0) * 7 + at(length / 2) * 17 + at(length - 1);
        const bool known = seen_[mark % seen_.size()];
        seen_[mark % seen_.size()] = true;
        return !known;
    }

  private:
    std::bitset<1024> seen_;
};

bool nested(json_object *created, blob_attr *attribute, int depth, JsonRoot *value) {
    value->reset(created);
    return created != nullptr && depth < DEPTH_MAX && add_members(created, attribute, depth + 1);
}

// False when the attribute is not one of the usual ones, or memory ran out.
bool convert(blob_attr *attribute, int depth, JsonRoot *value) {
    switch (blobmsg_type(attribute)) {
    case BLOBMSG_TYPE_TABLE:
        return nested(json_object_new_object(), attribute, depth, value);
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
bool add_value(json_object *container, const char *name, bool name_is_new, JsonRoot value) {
    const int added = name == nullptr
                          ? json_object_array_add(container, value.get())
                          : json_object_object_add_ex(container, name, value.get(),
                                                      name_is_new ? JSON_C_OBJECT_ADD_KEY_IS_NEW : 0);
    if (added != 0) return false;
    (void)value.release();
    return true;
}

bool add_members(json_object *container, blob_attr *message, int depth) {
    const bool named = !json_object_is_type(container, json_type_array);
    Names names;
    blob_attr *attribute = nullptr;
    size_t left = 0;
    blobmsg_for_each_attr(attribute, message, left) {
        if (!blobmsg_check_attr_len(attribute, named, left)) return false;
        JsonRoot value;
        if (!convert(attribute, depth, &value)) return false;
        const char *name = named ? blobmsg_name(attribute) : nullptr;
        if (!add_value(container, name, name != nullptr && names.is_new(name), std::move(value)))
            return false;
    }
    return true;
}

} // namespace

JsonRoot reply_document(blob_attr *message) {
    JsonRoot document(blob_is_extended(message) ? nullptr : json_object_new_object());
    if (document && add_members(document.get(), message, 0)) return document;
    return by_text(message);
}

} // namespace bus
