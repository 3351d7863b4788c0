// SPDX-License-Identifier: Apache-2.0
// The property table against a simulated router, as the SDK uses it, with an ear on the relay's port. For one
// test case in its own sandbox; what init slots do not reset lives on from one rig to the next.
#pragma once

#include <string>
#include <vector>

#include "core/handles.h"
#include "support/moving_clock.h"
#include "support/recording_sdk.h"
#include "support/router_rig.h"
#include "tebra_sdk.h"

class PropertyRig : public RouterRig {
  public:
    // Runs every init slot and forgets all calls, posts and pauses so far.
    PropertyRig();
    ~PropertyRig();

    // All calls since the last forget(), as "object method arguments"; those that change something.
    std::vector<std::string> calls() const;
    std::vector<std::string> writes() const;
    // The datagrams that the relay would have got, each with its size: "128 {...}".
    std::vector<std::string> events();
    // Forgets calls, posts and pauses.
    void forget();

  private:
    Descriptor relay;
};

using Texts = std::vector<std::string>;

const property_row &row(const std::string &name);
// The rows that have a slot.
std::vector<const property_row *> rows_with_set();
std::vector<const property_row *> rows_with_get();

// Calls the slots with the context "wan0" and usual buffers. A set returns when what it started has ended; a
// get gives the document, compact, "-1" when it was refused.
int set(const std::string &name, const std::string &request, const char *context = "wan0");
std::string get(const std::string &name);

// The texts of the property documents posted so far, compact.
Texts posts();

// JSON again without blanks and escaped slashes; "" when it is none.
std::string compact(const std::string &json);
JsonRoot parsed(const std::string &json);
bool same_json(const std::string &one, const std::string &other);
