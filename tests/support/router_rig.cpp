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
