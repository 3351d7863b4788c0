// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include <json-c/json.h>

extern "C" {
#include <libubox/blobmsg_json.h>
}

namespace {
// Takes a message back to where it was, containers opened since included.
class Checkpoint {
  public:
    explicit Checkpoint(blob_buf *message)
        : buf(message), head(reinterpret_cast<char *>(message->head) - static_cast<char *>(message->buf)),
          id_len(message->head->id_len) {}
    void restore() const {
        buf->head = reinterpret_cast<blob_attr *>(static_cast<char *>(buf->buf) + head);
        buf->head->id_len = id_len;
    }

  private:
    blob_buf *buf;
    ptrdiff_t head;
    uint32_t id_len;
};

bool add_element(blob_buf *buf, const char *name, json_object *value);

bool add_members(blob_buf *buf, json_object *object) {
    json_object_object_foreach(object, name, member) {
        if (!add_element(buf, name, member)) return false;
    }
    return true;
}

bool add_elements(blob_buf *buf, json_object *array) {
    size_t count = json_object_array_length(array);
    for (size_t i = 0; i < count; i++) {
        if (!add_element(buf, nullptr, json_object_array_get_idx(array, i))) return false;
    }
    return true;
}

bool add_container(blob_buf *buf, const char *name, json_object *container, bool array) {
    void *cookie = blobmsg_open_nested(buf, name, array);
    if (!cookie) return false;
    if (!(array ? add_elements(buf, container) : add_members(buf, container))) return false;
    blob_nest_end(buf, cookie);
    return true;
}

int add_integer(blob_buf *buf, const char *name, int64_t value) {
    if (value >= INT32_MIN && value <= INT32_MAX)
        return blobmsg_add_u32(buf, name, static_cast<uint32_t>(value));
    return blobmsg_add_u64(buf, name, static_cast<uint64_t>(value));
}

bool add_element(blob_buf *buf, const char *name, json_object *value) {
    switch (json_object_get_type(value)) {
    case json_type_object:
        return add_container(buf, name, value, false);
    case json_type_array:
        return add_container(buf, name, value, true);
    case json_type_string:
        return blobmsg_add_string(buf, name, json_object_get_string(value)) == 0;
    case json_type_boolean:
        return blobmsg_add_u8(buf, name, json_object_get_boolean(value) ? 1 : 0) == 0;
    case json_type_int:
        return add_integer(buf, name, json_object_get_int64(value)) == 0;
    case json_type_double:
        return blobmsg_add_double(buf, name, json_object_get_double(value)) == 0;
    case json_type_null:
        break;
    }
    return blobmsg_add_field(buf, BLOBMSG_TYPE_UNSPEC, name, nullptr, 0) == 0;
}

// Adds the members of a parsed document and releases it.
bool add_document(blob_buf *buf, json_object *document) {
    bool added = blobmsg_add_object(buf, document);
    json_object_put(document);
    return added;
}
} // namespace

bool blobmsg_add_object(blob_buf *b, json_object *obj) {
    if (!json_object_is_type(obj, json_type_object)) return false;
    Checkpoint before(b);
    if (add_members(b, obj)) return true;
    before.restore();
    return false;
}

bool blobmsg_add_json_from_string(blob_buf *b, const char *str) {
    return str && add_document(b, json_tokener_parse(str));
}
