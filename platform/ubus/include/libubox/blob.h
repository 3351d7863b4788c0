/* SPDX-License-Identifier: Apache-2.0 */
/* Blob attributes: what every bus message is made of. An attribute is a big-endian word (bit 31 extended,
 * bits 30..24 id, bits 23..0 length in bytes with the word, without padding) and its payload; attributes
 * start at multiples of 4.
 *
 * The inline readers trust the attribute; walk what comes from outside with blob_for_each_attr, which stops
 * at the first attribute that does not fit. Nothing here is global: different buffers may be used by
 * different threads. */
#ifndef LIBUBOX_BLOB_H
#define LIBUBOX_BLOB_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "utils.h"

#define BLOB_ATTR_ID_MASK 0x7f000000
#define BLOB_ATTR_ID_SHIFT 24
#define BLOB_ATTR_LEN_MASK 0x00ffffff
#define BLOB_ATTR_ALIGN 4
#define BLOB_ATTR_EXTENDED 0x80000000

struct blob_attr {
    uint32_t id_len;
    char data[];
} __packed;

/* A message under construction; starts zeroed. `head` is the innermost open container and moves when the
 * buffer grows. */
struct blob_buf {
    struct blob_attr *head;
    bool (*grow)(struct blob_buf *buf, int minlen);
    int buflen;
    void *buf;
};

static inline void *blob_data(const struct blob_attr *attr) {
    return (void *)attr->data;
}

static inline unsigned int blob_id(const struct blob_attr *attr) {
    return (be32_to_cpu(attr->id_len) & BLOB_ATTR_ID_MASK) >> BLOB_ATTR_ID_SHIFT;
}

static inline bool blob_is_extended(const struct blob_attr *attr) {
    return (be32_to_cpu(attr->id_len) & BLOB_ATTR_EXTENDED) != 0;
}

/* Length with the word, without padding. */
static inline size_t blob_raw_len(const struct blob_attr *attr) {
    return be32_to_cpu(attr->id_len) & BLOB_ATTR_LEN_MASK;
}

/* Length of the payload. */
static inline size_t blob_len(const struct blob_attr *attr) {
    return blob_raw_len(attr) < sizeof(struct blob_attr) ? 0 : blob_raw_len(attr) - sizeof(struct blob_attr);
}

/* Length with the word and the padding. */
static inline size_t blob_pad_len(const struct blob_attr *attr) {
    return (blob_raw_len(attr) + BLOB_ATTR_ALIGN - 1) & ~(size_t)(BLOB_ATTR_ALIGN - 1);
}

static inline struct blob_attr *blob_next(const struct blob_attr *attr) {
    return (struct blob_attr *)((char *)attr + blob_pad_len(attr));
}

static inline uint16_t blob_get_u16(const struct blob_attr *attr) {
    uint16_t value;
    memcpy(&value, attr->data, sizeof(value));
    return be16_to_cpu(value);
}

static inline uint32_t blob_get_u32(const struct blob_attr *attr) {
    uint32_t value;
    memcpy(&value, attr->data, sizeof(value));
    return be32_to_cpu(value);
}

static inline const char *blob_get_string(const struct blob_attr *attr) {
    return attr->data;
}

/* Starts a message: an empty root with this id. Keeps the memory of the last one. 0 or -ENOMEM. */
int blob_buf_init(struct blob_buf *buf, int id);
/* Frees the memory and clears buf, head and buflen. */
void blob_buf_free(struct blob_buf *buf);
/* Makes room for `required` more bytes. False when memory or the format's 24 bits of length do not allow it.
 */
bool blob_buf_grow(struct blob_buf *buf, int required);
/* Adds an attribute with a payload to be filled in by the caller. NULL, with the message as it was, when it
 * does not fit. */
struct blob_attr *blob_new(struct blob_buf *buf, int id, int payload);
/* The same with the payload copied from `ptr`. */
struct blob_attr *blob_put(struct blob_buf *buf, int id, const void *ptr, unsigned int len);
/* Opens a container; the cookie for blob_nest_end, which stays good when the buffer grows, or NULL. */
void *blob_nest_start(struct blob_buf *buf, int id);
void blob_nest_end(struct blob_buf *buf, void *cookie);
/* A copy for free(), or NULL. */
struct blob_attr *blob_memdup(const struct blob_attr *attr);

static inline struct blob_attr *blob_put_string(struct blob_buf *buf, int id, const char *text) {
    return blob_put(buf, id, text, (unsigned int)strlen(text) + 1);
}

static inline struct blob_attr *blob_put_u32(struct blob_buf *buf, int id, uint32_t value) {
    value = cpu_to_be32(value);
    return blob_put(buf, id, &value, sizeof(value));
}

/* Goes on while the attribute at `pos` lies within the `rem` bytes left. */
#define __blob_for_each(pos, start, length, rem)                                                             \
    for ((rem) = (length), (pos) = (struct blob_attr *)(start);                                              \
         (rem) >= sizeof(struct blob_attr) && blob_pad_len(pos) <= (rem) &&                                  \
         blob_pad_len(pos) >= sizeof(struct blob_attr);                                                      \
         (rem) -= blob_pad_len(pos), (pos) = blob_next(pos))
/* rem is a size_t; attr may be NULL. */
#define blob_for_each_attr(pos, attr, rem)                                                                   \
    __blob_for_each(pos, (attr) ? blob_data(attr) : NULL, (attr) ? blob_len(attr) : 0, rem)

#endif
