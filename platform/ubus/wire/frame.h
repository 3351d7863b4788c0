// SPDX-License-Identifier: Apache-2.0
// Messages as they travel: 8 bytes of header, then one top-level attribute whose content is plain attributes.
// Used by both ends of a connection; what is read here may come from anybody.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

extern "C" {
#include <libubox/blob.h>
#include <ubusmsg.h>
}

namespace wire {

inline constexpr size_t ATTR_COUNT = UBUS_ATTR_GROUP + 1;

inline constexpr size_t HEADER_BYTES = 8;
inline constexpr size_t SMALLEST_MESSAGE = HEADER_BYTES + sizeof(blob_attr);

struct Header {
    uint8_t version;
    uint8_t type;
    uint16_t seq;
    uint32_t peer;
};

inline Header read_header(const char *bytes) {
    Header header;
    memcpy(&header, bytes, HEADER_BYTES);
    header.seq = be16_to_cpu(header.seq);
    header.peer = be32_to_cpu(header.peer);
    return header;
}

inline void write_header(char *bytes, Header header) {
    header.seq = cpu_to_be16(header.seq);
    header.peer = cpu_to_be32(header.peer);
    memcpy(bytes, &header, HEADER_BYTES);
}

inline bool body_length_allowed(const blob_attr *body) {
    return blob_raw_len(body) >= sizeof(blob_attr) && blob_pad_len(body) <= UBUS_MAX_MSGLEN;
}

// The attributes of a message, null where they are absent or not what their number demands. Of repeated ones
// the last.
struct Attributes {
    const blob_attr *at[ATTR_COUNT] = {};

    explicit Attributes(const blob_attr *body) {
        blob_attr *attr;
        size_t rem;
        blob_for_each_attr(attr, body, rem) {
            if (blob_id(attr) < ATTR_COUNT && valid(attr)) at[blob_id(attr)] = attr;
        }
    }
    // Of one that is there.
    uint32_t number(ubus_msg_attr attribute) const { return blob_get_u32(at[attribute]); }

  private:
    static bool valid(const blob_attr *attr) {
        enum Kind { OTHER, NESTED, TEXT, NUMBER, FLAG };
        static constexpr Kind KINDS[ATTR_COUNT] = {OTHER,  NUMBER, TEXT, NUMBER, TEXT,   NUMBER, NESTED,
                                                   NESTED, NUMBER, FLAG, FLAG,   NESTED, TEXT,   TEXT};
        size_t length = blob_len(attr);
        switch (KINDS[blob_id(attr)]) {
        case NUMBER:
            return length == sizeof(uint32_t);
        case FLAG:
            return length == sizeof(uint8_t);
        case TEXT:
            return length > 0 && attr->data[length - 1] == '\0';
        default:
            return true;
        }
    }
};

} // namespace wire
