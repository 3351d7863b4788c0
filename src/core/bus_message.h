// SPDX-License-Identifier: Apache-2.0
// The argument message of a bus call. Each message owns its buffer, so threads that write at once do not
// meet.
#pragma once

#include <cstdint>

struct blob_attr;
struct blob_buf;

class BusMessage {
  public:
    BusMessage();
    ~BusMessage();
    BusMessage(const BusMessage &) = delete;
    BusMessage &operator=(const BusMessage &) = delete;

    // Members are sent in the order in which they are added.
    BusMessage &integer(const char *name, int32_t value);
    BusMessage &text(const char *name, const char *value); // null is sent as ""

    // The message, for core/bus; lives as long as this object and until the next member is added. Null when
    // memory ran out.
    blob_attr *head() const;

  private:
    blob_buf *bbuf;
    bool complete;
};
