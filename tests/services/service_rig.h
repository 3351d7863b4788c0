// SPDX-License-Identifier: Apache-2.0
// The service table against a simulated router, as the SDK uses it. For one test case in its own sandbox.
#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/helper_stub.h"
#include "support/moving_clock.h"
#include "support/recording_sdk.h"
#include "support/router_rig.h"
#include "support/text_file.h"

using Texts = std::vector<std::string>;

struct ServiceRig : RouterRig {
    // Starts the router from a merge patch of its home; set_flag is down.
    explicit ServiceRig(const std::string &patch = {});
    ~ServiceRig();

    // Forgets what came so far and calls a row. Gives what the handler returned and its answers:
    // "0: 200 reboot {}", "-1:" for none.
    std::string call(const std::string &service, const char *parameters);
    // The seconds that were slept since.
    static double slept();

    // The backup document; "" without one.
    static std::string backup();
    // Forgets what came so far and restores a document. The restore's result.
    int restore(const std::string &document);
};

// One call and what is to come of it; texts that are null are not looked at. A row of one text names the
// service of those below.
struct ServiceRow {
    const char *parameters, *answer = nullptr; // as call gives it, without the service's own name
    const char *write = nullptr;               // the last call that is no plain read, "" for none
    const char *logged = nullptr;
    const char *patch = ""; // of the home
    router::Fault fault = {.object = ""};
};
void check(const std::vector<ServiceRow> &rows);
