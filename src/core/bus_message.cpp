// SPDX-License-Identifier: Apache-2.0
#include "core/bus_message.h"

#include <new>

#include "core/bus_library.h"

BusMessage::BusMessage() : bbuf(new (std::nothrow) blob_buf{}), complete(bbuf != nullptr) {
    if (complete) complete = blob_buf_init(bbuf, 0) == 0;
}

BusMessage::~BusMessage() {
    if (bbuf != nullptr) blob_buf_free(bbuf);
    delete bbuf;
}

BusMessage &BusMessage::integer(const char *name, int32_t value) {
    complete = complete && blobmsg_add_u32(bbuf, name, static_cast<uint32_t>(value)) == 0;
    return *this;
}

BusMessage &BusMessage::text(const char *name, const char *value) {
    complete = complete && blobmsg_add_string(bbuf, name, value == nullptr ? "" : value) == 0;
    return *this;
}

blob_attr *BusMessage::head() const {
    return complete ? bbuf->head : nullptr;
}
