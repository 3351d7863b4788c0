// SPDX-License-Identifier: Apache-2.0
// A router and, at the address that it names, the device-management server that knows it.
#pragma once

#include "sim/cloud/cloud.h"
#include "support/router_rig.h"

struct CloudRig : RouterRig {
    CloudRig() {
        cloud.add_device({"SIM2408000017", "Tq83mZc1wk", "simulated-device-secret"});
        cloud.start(11443);
    }
    cloudsim::Cloud cloud;
};
