// SPDX-License-Identifier: Apache-2.0
// A client of the bus that calls as any program of the device would, and the steps of a table.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "sim/router/router.h"
#include "support/bus_client.h"

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

class BusCaller : Client {
  public:
    explicit BusCaller(const char *socket = router::DEFAULT_SOCKET) : Client(socket) {}

    // The id of an object; 0 when the bus does not know it.
    uint32_t id(const std::string &object) {
        uint32_t id = 0;
        status = look_up(object.c_str(), &id);
        return id;
    }
    // The reply as JSON text; "" without one. `status` is the call's status then.
    std::string call(const std::string &line, int limit_millis = LIMIT) {
        const CallLine words(line);
        const uint32_t target = id(words.object);
        if (target == 0) return "";
        Answer answer =
            Client::call(target, words.method.c_str(), Buffer(words.arguments).head, limit_millis);
        status = answer.status;
        return answer.json;
    }

    int status = 0;
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
