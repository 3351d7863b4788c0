// SPDX-License-Identifier: Apache-2.0
// A client of the bus that calls as any program of the device would, and the steps of a table.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <libubus.h>
#undef fallthrough

#include "sim/router/router.h"
#include "support/blob_buffer.h"

inline constexpr char DONE[] = R"({"result":"0"})";

// "object method {arguments}"; the arguments may be left out.
struct CallLine {
    explicit CallLine(const std::string &line) {
        std::istringstream words(line);
        std::getline(words >> object >> method >> std::ws, arguments);
        if (arguments.empty()) arguments = "{}";
    }
    std::string object, method, arguments;
};

class BusCaller {
  public:
    explicit BusCaller(const char *socket = router::DEFAULT_SOCKET) : context(ubus_connect(socket)) {}
    ~BusCaller() { ubus_free(context); }
    BusCaller(const BusCaller &) = delete;
    BusCaller &operator=(const BusCaller &) = delete;

    // The id of an object; 0 when the bus does not know it.
    uint32_t id(const std::string &object) {
        uint32_t id = 0;
        status = ubus_lookup_id(context, object.c_str(), &id);
        return status == 0 ? id : 0;
    }
    // The reply as JSON text; "" without one. `status` is the call's status then.
    std::string call(const std::string &line, int limit_millis = 5000) {
        const CallLine words(line);
        const uint32_t target = id(words.object);
        std::string reply;
        if (target == 0) return reply;
        const Buffer message(words.arguments);
        status = ubus_invoke(context, target, words.method.c_str(), message.head, keep, &reply, limit_millis);
        return reply;
    }

    int status = 0;

  private:
    static void keep(ubus_request *request, int, blob_attr *message) {
        *static_cast<std::string *>(request->priv) = take(blobmsg_format_json(message, true));
    }

    ubus_context *context;
};

// A call without the bus, and so without faults.
inline std::string call(router::Router &router, const std::string &line) {
    const CallLine words(line);
    return router.call(words.object, words.method, words.arguments);
}

// A call that is carried out and what the state holds then: "POINTER=JSON" apart by blanks, "POINTER=" where
// there is nothing.
struct Step {
    const char *call, *shows = "";
};

inline void play(router::Router &router, const std::vector<Step> &steps) {
    for (const Step &step : steps) {
        SCOPED_TRACE(step.call);
        EXPECT_EQ(call(router, step.call), DONE);
        std::istringstream facts(step.shows);
        for (std::string fact; facts >> fact;) {
            const std::string pointer = fact.substr(0, fact.find('='));
            EXPECT_EQ(pointer + "=" + router.value(pointer), fact);
        }
    }
}
