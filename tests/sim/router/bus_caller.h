// SPDX-License-Identifier: Apache-2.0
// A client of the bus that calls as any program of the device would, and a router to call.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/router/router.h"

struct ubus_context;

class BusCaller {
  public:
    explicit BusCaller(const char *socket = router::DEFAULT_SOCKET); // connected() tells whether it worked
    ~BusCaller();
    BusCaller(const BusCaller &) = delete;
    BusCaller &operator=(const BusCaller &) = delete;

    bool connected() const { return context != nullptr; }
    // The id of an object; 0 when the bus does not know it.
    uint32_t id(const std::string &object);
    // The reply as JSON text; "" without one. `status` is the call's status then.
    std::string call(const std::string &object, const std::string &method,
                     const std::string &arguments = "{}");
    // One member of the reply, by JSON pointer, as JSON text.
    std::string call_for(const std::string &object, const std::string &method, const std::string &pointer,
                         const std::string &arguments = "{}");

    int status = 0;
    int limit_millis = 5000;

  private:
    ubus_context *context;
};

// What stands at a JSON pointer of a text, as JSON text; "" when nothing does.
std::string at(const std::string &json, const std::string &pointer);

struct Home {
    Home() { router.start(); }

    router::Router router;
};
