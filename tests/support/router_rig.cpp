// SPDX-License-Identifier: Apache-2.0
#include "support/router_rig.h"

#include "core/bus.h"

RouterRig::RouterRig(const std::string &state) : router(state) {
    router.start(BUS_SOCKET);
    set_default_logs();
    ubus_init(0);
}

RouterRig::~RouterRig() {
    ubus_done();
    router.stop();
}

std::vector<std::string> RouterRig::arguments(const std::string &object, const std::string &method) const {
    std::vector<std::string> result;
    for (const router::Call &call : router.calls(object, method))
        result.push_back(call.arguments);
    return result;
}

std::vector<std::string> RouterRig::calls() const {
    std::vector<std::string> lines;
    for (const router::Call &call : router.calls())
        lines.push_back(call.object + " " + call.method + " " + call.arguments);
    return lines;
}

std::vector<std::string> RouterRig::writes() const {
    std::vector<std::string> lines = calls();
    std::erase_if(lines, [](const std::string &line) {
        const std::string method = line.substr(line.find(' ') + 1);
        return method.starts_with("get") || method.starts_with("list");
    });
    return lines;
}
