// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstdlib>

extern "C" {
#include <libubox/blob.h>
}

#include "nesting.h"

namespace {
constexpr size_t GROWTH_STEP = 256;
constexpr size_t MAX_MESSAGE = BLOB_ATTR_LEN_MASK;

size_t padded(size_t length) {
    return (length + BLOB_ATTR_ALIGN - 1) & ~size_t{BLOB_ATTR_ALIGN - 1};
}

void set_raw_len(blob_attr *attr, size_t length) {
    uint32_t word = be32_to_cpu(attr->id_len) & ~uint32_t{BLOB_ATTR_LEN_MASK};
    attr->id_len = cpu_to_be32(word | static_cast<uint32_t>(length));
}

blob_attr *attr_at(const blob_buf *buf, size_t offset) {
    return reinterpret_cast<blob_attr *>(static_cast<char *>(buf->buf) + offset);
}

bool grow_buffer(blob_buf *buf, int minlen) {
    size_t missing = (static_cast<size_t>(minlen) / GROWTH_STEP + 1) * GROWTH_STEP;
    size_t length = static_cast<size_t>(buf->buflen) + missing;
    size_t head = buf->head ? offset_of(buf, buf->head) : 0;
    void *memory = realloc(buf->buf, length);
    if (!memory) return false;
    memset(static_cast<char *>(memory) + buf->buflen, 0, missing);
    buf->buf = memory;
    buf->buflen = static_cast<int>(length);
    if (buf->head) buf->head = attr_at(buf, head);
    return true;
}

// Makes an attribute with room for its payload at this offset; padding is zeroed.
blob_attr *make_attr(blob_buf *buf, size_t offset, int id, size_t payload) {
    size_t raw = sizeof(blob_attr) + payload;
    size_t end = offset + padded(raw);
    if (payload > MAX_MESSAGE || end > MAX_MESSAGE) return nullptr;
    auto available = static_cast<size_t>(buf->buflen);
    if (end > available && !blob_buf_grow(buf, static_cast<int>(end - available))) return nullptr;
    blob_attr *attr = attr_at(buf, offset);
    uint32_t word = (static_cast<uint32_t>(id) << BLOB_ATTR_ID_SHIFT) & BLOB_ATTR_ID_MASK;
    attr->id_len = cpu_to_be32(word | static_cast<uint32_t>(raw));
    memset(reinterpret_cast<char *>(attr) + raw, 0, padded(raw) - raw);
    return attr;
}
} // namespace

bool blob_buf_grow(blob_buf *buf, int required) {
    if (required < 0 || static_cast<size_t>(buf->buflen) + static_cast<size_t>(required) > MAX_MESSAGE)
        return false;
    return buf->grow && buf->grow(buf, required);
}

int blob_buf_init(blob_buf *buf, int id) {
    if (!buf->grow) buf->grow = grow_buffer;
    buf->head = nullptr;
    blob_attr *root = make_attr(buf, 0, id, 0);
    buf->head = root;
    return root ? 0 : -ENOMEM;
}

void blob_buf_free(blob_buf *buf) {
    free(buf->buf);
    buf->buf = nullptr;
    buf->head = nullptr;
    buf->buflen = 0;
}

blob_attr *blob_new(blob_buf *buf, int id, int payload) {
    if (payload < 0) return nullptr;
    size_t offset = offset_of(buf, buf->head) + blob_pad_len(buf->head);
    blob_attr *attr = make_attr(buf, offset, id, static_cast<size_t>(payload));
    if (attr) set_raw_len(buf->head, blob_pad_len(buf->head) + blob_pad_len(attr));
    return attr;
}

blob_attr *blob_put(blob_buf *buf, int id, const void *ptr, unsigned int len) {
    if (len > MAX_MESSAGE) return nullptr;
    blob_attr *attr = blob_new(buf, id, static_cast<int>(len));
    if (attr && len > 0) memcpy(attr->data, ptr, len);
    return attr;
}

void *blob_nest_start(blob_buf *buf, int id) {
    void *cookie = nest_cookie(buf);
    blob_attr *nested = blob_new(buf, id, 0);
    if (!nested) return nullptr;
    buf->head = nested;
    return cookie;
}

void blob_nest_end(blob_buf *buf, void *cookie) {
    if (!cookie) return;
    blob_attr *outer = attr_at(buf, nest_offset(cookie));
    size_t end = offset_of(buf, buf->head) + blob_pad_len(buf->head);
    set_raw_len(outer, end - offset_of(buf, outer));
    buf->head = outer;
}

blob_attr *blob_memdup(const blob_attr *attr) {
    size_t length = blob_pad_len(attr);
    auto *copy = static_cast<blob_attr *>(calloc(1, length < sizeof(blob_attr) ? sizeof(blob_attr) : length));
    if (copy)
        memcpy(copy, attr, blob_raw_len(attr) < sizeof(blob_attr) ? sizeof(blob_attr) : blob_raw_len(attr));
    return copy;
}
