/* SPDX-License-Identifier: Apache-2.0 */
/* Named, typed values in blob attributes: the content of DATA and SIGNATURE. The header of the value holds
 * the length of the name, the name, its NUL, and padding.
 *
 * Adding functions return 0, or -1 with the message as it was. A null name is the empty name of array
 * elements. The getters check neither type nor length: use blobmsg_check_attr_len on what comes from
 * outside. */
#ifndef LIBUBOX_BLOBMSG_H
#define LIBUBOX_BLOBMSG_H

#include "blob.h"

#define BLOBMSG_ALIGN 2
#define BLOBMSG_PADDING(len) (((len) + (1 << BLOBMSG_ALIGN) - 1) & ~((1U << BLOBMSG_ALIGN) - 1))

enum blobmsg_type {
    BLOBMSG_TYPE_UNSPEC,
    BLOBMSG_TYPE_ARRAY,
    BLOBMSG_TYPE_TABLE,
    BLOBMSG_TYPE_STRING,
    BLOBMSG_TYPE_INT64,
    BLOBMSG_TYPE_INT32,
    BLOBMSG_TYPE_INT16,
    BLOBMSG_TYPE_INT8,
    BLOBMSG_TYPE_BOOL = BLOBMSG_TYPE_INT8,
    BLOBMSG_TYPE_DOUBLE,
    __BLOBMSG_TYPE_LAST,
    BLOBMSG_TYPE_LAST = __BLOBMSG_TYPE_LAST - 1,
};

struct blobmsg_hdr {
    uint16_t namelen;
    uint8_t name[];
} __packed;

static inline size_t blobmsg_hdrlen(unsigned int namelen) {
    return BLOBMSG_PADDING(sizeof(struct blobmsg_hdr) + namelen + 1);
}

/* The name, "" for an attribute without one. */
static inline const char *blobmsg_name(const struct blob_attr *attr) {
    return blob_is_extended(attr) ? attr->data + sizeof(struct blobmsg_hdr) : "";
}

static inline int blobmsg_type(const struct blob_attr *attr) {
    return (int)blob_id(attr);
}

static inline size_t __blobmsg_value_offset(const struct blob_attr *attr) {
    return blob_is_extended(attr) ? blobmsg_hdrlen(blob_get_u16(attr)) : 0;
}

/* The value; NULL for NULL. */
static inline void *blobmsg_data(const struct blob_attr *attr) {
    return attr ? (char *)blob_data(attr) + __blobmsg_value_offset(attr)
                : NULL; /* NOLINT(modernize-use-nullptr): C as well */
}

/* Its length in bytes; 0 for NULL and where the header does not fit. */
static inline size_t blobmsg_data_len(const struct blob_attr *attr) {
    size_t offset = attr ? __blobmsg_value_offset(attr) : 0;
    return !attr || offset > blob_len(attr) ? 0 : blob_len(attr) - offset;
}

/* Whether header and value of an attribute, of which only `len` bytes may be read, are as their type demands;
 * `name` demands a name that is not empty. */
bool blobmsg_check_attr_len(const struct blob_attr *attr, bool name, size_t len);
int blobmsg_add_field(struct blob_buf *buf, int type, const char *name, const void *data, unsigned int len);
/* Opens a table or an array; the cookie for closing it, or NULL. */
void *blobmsg_open_nested(struct blob_buf *buf, const char *name, bool array);

static inline int blobmsg_add_u8(struct blob_buf *buf, const char *name, uint8_t value) {
    return blobmsg_add_field(buf, BLOBMSG_TYPE_INT8, name, &value, sizeof(value));
}

static inline int blobmsg_add_u32(struct blob_buf *buf, const char *name, uint32_t value) {
    value = cpu_to_be32(value);
    return blobmsg_add_field(buf, BLOBMSG_TYPE_INT32, name, &value, sizeof(value));
}

static inline int blobmsg_add_u64(struct blob_buf *buf, const char *name, uint64_t value) {
    value = cpu_to_be64(value);
    return blobmsg_add_field(buf, BLOBMSG_TYPE_INT64, name, &value, sizeof(value));
}

static inline int blobmsg_add_double(struct blob_buf *buf, const char *name, double value) {
    uint64_t bits;
    memcpy(&bits, &value, sizeof(bits));
    bits = cpu_to_be64(bits);
    return blobmsg_add_field(buf, BLOBMSG_TYPE_DOUBLE, name, &bits, sizeof(bits));
}

static inline int blobmsg_add_string(struct blob_buf *buf, const char *name, const char *string) {
    return blobmsg_add_field(buf, BLOBMSG_TYPE_STRING, name, string, (unsigned int)strlen(string) + 1);
}

static inline void *blobmsg_open_table(struct blob_buf *buf, const char *name) {
    return blobmsg_open_nested(buf, name, false);
}

static inline void blobmsg_close_table(struct blob_buf *buf, void *cookie) {
    blob_nest_end(buf, cookie);
}

static inline void *blobmsg_open_array(struct blob_buf *buf, const char *name) {
    return blobmsg_open_nested(buf, name, true);
}

static inline void blobmsg_close_array(struct blob_buf *buf, void *cookie) {
    blob_nest_end(buf, cookie);
}

static inline uint8_t blobmsg_get_u8(struct blob_attr *attr) {
    return *(uint8_t *)blobmsg_data(attr);
}

static inline bool blobmsg_get_bool(struct blob_attr *attr) {
    return blobmsg_get_u8(attr) != 0;
}

static inline uint16_t blobmsg_get_u16(struct blob_attr *attr) {
    uint16_t value;
    memcpy(&value, blobmsg_data(attr), sizeof(value));
    return be16_to_cpu(value);
}

static inline uint32_t blobmsg_get_u32(struct blob_attr *attr) {
    uint32_t value;
    memcpy(&value, blobmsg_data(attr), sizeof(value));
    return be32_to_cpu(value);
}

static inline uint64_t blobmsg_get_u64(struct blob_attr *attr) {
    uint64_t value;
    memcpy(&value, blobmsg_data(attr), sizeof(value));
    return be64_to_cpu(value);
}

static inline double blobmsg_get_double(struct blob_attr *attr) {
    uint64_t bits = blobmsg_get_u64(attr);
    double value;
    memcpy(&value, &bits, sizeof(value));
    return value;
}

/* The string; NULL for NULL. */
static inline char *blobmsg_get_string(struct blob_attr *attr) {
    return (char *)blobmsg_data(attr);
}

/* An integer of any width with its sign, 0 for other types. */
static inline int64_t blobmsg_cast_s64(struct blob_attr *attr) {
    switch (blobmsg_type(attr)) {
    case BLOBMSG_TYPE_INT8:
        return (int8_t)blobmsg_get_u8(attr);
    case BLOBMSG_TYPE_INT16:
        return (int16_t)blobmsg_get_u16(attr);
    case BLOBMSG_TYPE_INT32:
        return (int32_t)blobmsg_get_u32(attr);
    case BLOBMSG_TYPE_INT64:
        return (int64_t)blobmsg_get_u64(attr);
    default:
        return 0;
    }
}

/* rem is a size_t; attr may be NULL. */
#define blobmsg_for_each_attr(pos, attr, rem)                                                                \
    __blob_for_each(pos, blobmsg_data(attr), blobmsg_data_len(attr), rem)

#endif
