// SPDX-License-Identifier: Apache-2.0
// A simulated router on the bus's socket and the agent's core connected to it, as after the first steps of
// start-up. For one test case in its own sandbox.
#pragma once

#include <string>
#include <vector>

#include "sim/router/router.h"
#include "support/main_log.h"

class RouterRig {
  public:
    // Starts the router from a state (JSON text, the home router's when empty), sets the log paths and
    // connects.
    explicit RouterRig(const std::string &state = {});
    ~RouterRig();
    RouterRig(const RouterRig &) = delete;
    RouterRig &operator=(const RouterRig &) = delete;

    // Arguments of the calls that came over the bus for one object and method, oldest first.
    std::vector<std::string> arguments(const std::string &object, const std::string &method) const;

    // The calls that came since the router's were cleared, oldest first, as "object method arguments"; those
    // that are no plain reads.
    std::vector<std::string> calls() const;
    std::vector<std::string> writes() const;

    router::Router router;
};
