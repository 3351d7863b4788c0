// SPDX-License-Identifier: Apache-2.0
// What the daemon and the runtime file have answered to one piece of work, each asked once: the document of
// all devices reads every list one time, however many devices there are. What a caller makes for itself asks
// anew; nothing lasts longer than the object. Of one thread.
#pragma once

#include <string>
#include <vector>

#include "core/handles.h"
#include "core/log.h"

class BusReplies {
  public:
    // The reply's member named like the object, of a method without arguments; null when there was none,
    // which is not asked for again either. Borrowed, as all that follows.
    json_object *whole(const char *object, const char *method) const;
    // The same of "getbymac". Only the replies about the MAC asked for last are kept.
    json_object *of_device(const char *object, const char *mac) const;
    // Today's client runtimes; null when there are none. A file that cannot be opened is logged.
    json_object *runtimes() const;

    BusReplies() = default;
    BusReplies(const BusReplies &) = delete;
    BusReplies &operator=(const BusReplies &) = delete;

  private:
    struct Reply {
        const char *object; // and method: constants of the callers
        const char *method;
        JsonRoot root;
        json_object *member;
    };
    struct DeviceReply {
        const char *object;
        std::string mac;
        JsonRoot root;
        json_object *member;
    };
    mutable std::vector<Reply> lists_;
    mutable std::vector<DeviceReply> of_devices_;
    mutable JsonRoot runtimes_;
    mutable bool runtimes_read_ = false;
};

// True, and logged ("param is NULL") in the caller's name, for a null or empty text.
bool is_missing(const char *text, LogSite site = LogSite::here());

// The element of an array whose "mac" is spelled so; null when there is none, or no array.
json_object *element_of_mac(json_object *array, const char *mac);
