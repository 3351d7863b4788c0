// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
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

bool policy_takes(const blobmsg_policy &policy, const blob_attr *attr) {
    int type = blobmsg_type(attr);
    switch (static_cast<int>(policy.type)) {
    case BLOBMSG_TYPE_UNSPEC:
        return true;
    case BLOBMSG_CAST_INT64:
        return type == BLOBMSG_TYPE_INT8 || type == BLOBMSG_TYPE_INT16 || type == BLOBMSG_TYPE_INT32 ||
               type == BLOBMSG_TYPE_INT64;
    default:
        return type == static_cast<int>(policy.type);
    }
}

bool policy_names(const blobmsg_policy &policy, const blob_attr *attr) {
    return policy.name && blob_is_extended(attr) && strcmp(policy.name, blobmsg_name(attr)) == 0;
}

void clear_table(blob_attr **tb, int policy_len) {
    for (int i = 0; i < policy_len; i++)
        tb[i] = nullptr;
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

bool blobmsg_check_attr(const blob_attr *attr, bool name) {
    return blobmsg_check_attr_len(attr, name, blob_raw_len(attr));
}

int blobmsg_check_array(const blob_attr *attr, int type) {
    if (!attr || blobmsg_type(attr) != BLOBMSG_TYPE_ARRAY || !blobmsg_check_attr(attr, false)) return -1;
    int count = 0;
    blob_attr *element;
    size_t rem;
    blobmsg_for_each_attr(element, attr, rem) {
        if (!blobmsg_check_attr_len(element, false, rem)) return -1;
        if (type != BLOBMSG_TYPE_UNSPEC && blobmsg_type(element) != type) return -1;
        count++;
    }
    return count;
}

int blobmsg_parse(const blobmsg_policy *policy, int policy_len, blob_attr **tb, void *data,
                  unsigned int len) {
    clear_table(tb, policy_len);
    if (!data || len == 0) return -EINVAL;
    blob_attr *attr;
    size_t rem;
    __blob_for_each(attr, data, len, rem) {
        if (!blobmsg_check_attr_len(attr, false, rem)) return -1;
        for (int i = 0; i < policy_len; i++) {
            if (!tb[i] && policy_names(policy[i], attr) && policy_takes(policy[i], attr)) {
                tb[i] = attr;
                break;
            }
        }
    }
    return 0;
}

int blobmsg_parse_array(const blobmsg_policy *policy, int policy_len, blob_attr **tb, void *data,
                        unsigned int len) {
    clear_table(tb, policy_len);
    if (!data || len == 0) return -EINVAL;
    int i = 0;
    blob_attr *attr;
    size_t rem;
    __blob_for_each(attr, data, len, rem) {
        if (i >= policy_len) break;
        if (!blobmsg_check_attr_len(attr, false, rem)) return -1;
        if (policy_takes(policy[i], attr)) tb[i] = attr;
        i++;
    }
    return 0;
}

int blobmsg_add_field(blob_buf *buf, int type, const char *name, const void *data, unsigned int len) {
    if (type < 0 || type > BLOBMSG_TYPE_LAST) return -1;
    blob_attr *attr = new_named(buf, type, name, len);
    if (!attr) return -1;
    if (len > 0) memcpy(blobmsg_data(attr), data, len);
    return 0;
}

int blobmsg_printf(blob_buf *buf, const char *name, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char *text = nullptr;
    int length = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0) return -1;
    int ret = blobmsg_add_field(buf, BLOBMSG_TYPE_STRING, name, text, static_cast<unsigned>(length) + 1);
    free(text);
    return ret;
}

void *blobmsg_open_nested(blob_buf *buf, const char *name, bool array) {
    void *cookie = nest_cookie(buf);
    blob_attr *nested = new_named(buf, array ? BLOBMSG_TYPE_ARRAY : BLOBMSG_TYPE_TABLE, name, 0);
    if (!nested) return nullptr;
    buf->head = nested;
    return cookie;
}
