// SPDX-License-Identifier: Apache-2.0
#include <sys/types.h>

extern "C" {
#include <libubox/blobmsg.h>
}

#include "nesting.h"

namespace {
constexpr size_t MAX_NAME = UINT16_MAX;

// The value's offset in the payload, or -1 when the header does not fit into it or its name is not
// terminated.
ssize_t checked_value_offset(const blob_attr *attr) {
    if (!blob_is_extended(attr)) return 0;
    size_t length = blob_len(attr);
    if (length < sizeof(blobmsg_hdr)) return -1;
    size_t name_length = blob_get_u16(attr);
    size_t offset = blobmsg_hdrlen(static_cast<unsigned>(name_length));
    if (offset > length || attr->data[sizeof(blobmsg_hdr) + name_length] != '\0') return -1;
    return static_cast<ssize_t>(offset);
}

bool value_fits_type(int type, const char *value, size_t length) {
    switch (type) {
    case BLOBMSG_TYPE_INT8:
        return length == sizeof(uint8_t);
    case BLOBMSG_TYPE_INT16:
        return length == sizeof(uint16_t);
    case BLOBMSG_TYPE_INT32:
        return length == sizeof(uint32_t);
    case BLOBMSG_TYPE_INT64:
        return length == sizeof(uint64_t);
    case BLOBMSG_TYPE_DOUBLE:
        return length >= sizeof(double);
    case BLOBMSG_TYPE_STRING:
        return length > 0 && value[length - 1] == '\0';
    default:
        return type >= 0 && type <= BLOBMSG_TYPE_LAST;
    }
}

// Adds an attribute with the name filled in and returns it.
blob_attr *new_named(blob_buf *buf, int type, const char *name, size_t value_length) {
    if (!name) name = "";
    size_t name_length = strlen(name);
    if (name_length > MAX_NAME || value_length > BLOB_ATTR_LEN_MASK) return nullptr;
    size_t header_length = blobmsg_hdrlen(static_cast<unsigned>(name_length));
    blob_attr *attr = blob_new(buf, type, static_cast<int>(header_length + value_length));
    if (!attr) return nullptr;
    attr->id_len |= cpu_to_be32(BLOB_ATTR_EXTENDED);
    auto *header = reinterpret_cast<blobmsg_hdr *>(attr->data);
    memset(header, 0, header_length);
    header->namelen = cpu_to_be16(static_cast<uint16_t>(name_length));
    memcpy(header->name, name, name_length);
    return attr;
}
} // namespace

bool blobmsg_check_attr_len(const blob_attr *attr, bool name, size_t len) {
    if (len < sizeof(blob_attr) || blob_raw_len(attr) < sizeof(blob_attr) || blob_raw_len(attr) > len)
        return false;
    ssize_t offset = checked_value_offset(attr);
    if (offset < 0) return false;
    if (name && (!blob_is_extended(attr) || blob_get_u16(attr) == 0)) return false;
    return value_fits_type(blobmsg_type(attr), attr->data + offset,
                           blob_len(attr) - static_cast<size_t>(offset));
}

int blobmsg_add_field(blob_buf *buf, int type, const char *name, const void *data, unsigned int len) {
    if (type < 0 || type > BLOBMSG_TYPE_LAST) return -1;
    blob_attr *attr = new_named(buf, type, name, len);
    if (!attr) return -1;
    if (len > 0) memcpy(blobmsg_data(attr), data, len);
    return 0;
}

void *blobmsg_open_nested(blob_buf *buf, const char *name, bool array) {
    void *cookie = nest_cookie(buf);
    blob_attr *nested = new_named(buf, array ? BLOBMSG_TYPE_ARRAY : BLOBMSG_TYPE_TABLE, name, 0);
    if (!nested) return nullptr;
    buf->head = nested;
    return cookie;
}
