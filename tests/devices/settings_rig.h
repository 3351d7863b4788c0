// SPDX-License-Identifier: Apache-2.0
// The set slot of client devices against a simulated router. For one test case in its own sandbox.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "devices/device_settings.h"
#include "support/moving_clock.h"
#include "support/router_rig.h"
#include "support/wait_until.h"

inline constexpr char PC[] = "02a0c9000001";
inline constexpr char TABLET[] = "02a0c9000005"; // the home's only one under parental control

class SettingsRig : public RouterRig {
  public:
    using RouterRig::RouterRig;

    int set(const std::string &elements) { return set_text(R"({"apDevices":[)" + elements + "]}"); }
    int set_text(const std::string &request) {
        char reply[64];
        return apDevices_set("apDevices", request.c_str(), reply, sizeof reply);
    }
    // Waits until the last write begins so; false when ten seconds pass first.
    bool wait_for_write(const std::string &start) const {
        return wait_until([&] {
            const std::vector<std::string> lines = calls();
            return !lines.empty() && lines.back().starts_with("vrop." + start);
        });
    }
    // The calls that change something since the last take, as "object method arguments" without "vrop.".
    std::vector<std::string> take_writes() {
        std::vector<std::string> lines = writes();
        for (std::string &line : lines)
            line.erase(0, strlen("vrop."));
        router.clear_calls();
        return lines;
    }
};

// An element about a device with further members.
inline std::string about(const char *mac, const std::string &members) {
    return std::string(R"({"mac":")") + mac + R"(",)" + members + "}";
}
// The same, to be applied.
inline std::string applied(const char *mac, const std::string &members) {
    return about(mac, R"("operationType":1,)" + members);
}
