// SPDX-License-Identifier: Apache-2.0
// The steps of a table.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "sim/router/router.h"

inline constexpr char DONE[] = R"({"result":"0"})";

// "object method {arguments}"; the arguments may be left out. Not over the bus, and so without faults.
inline std::string call(router::Router &router, const std::string &line) {
    std::istringstream words(line);
    std::string object, method, arguments;
    std::getline(words >> object >> method >> std::ws, arguments);
    return router.call(object, method, arguments.empty() ? "{}" : arguments);
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

// On a home of its own.
inline void play(const std::vector<Step> &steps) {
    router::Router router;
    play(router, steps);
}
