// SPDX-License-Identifier: Apache-2.0
// The property table against a simulated router, as the SDK uses it, with an ear on the relay's port. For one
// test case in its own sandbox; what init slots do not reset lives on from one rig to the next.
#pragma once

#include <string>
#include <vector>

#include "binding/tables.h"
#include "support/event_catcher.h"
#include "support/moving_clock.h"
#include "support/recording_sdk.h"
#include "support/router_rig.h"

using Texts = std::vector<std::string>;

class PropertyRig : public RouterRig {
  public:
    // Starts the router from a merge patch of its home, runs every init slot, and forgets what came so far.
    explicit PropertyRig(const std::string &patch = {});
    ~PropertyRig();

    // The calls, and then the events that the relay would have got.
    Texts take();
    // Forgets calls, datagrams, posts and pauses, and what the log says.
    void forget();

  private:
    EventCatcher relay{128};
};

// A patch that gives both schedules an entry, so that their documents have members, and leaves one client
// device.
inline constexpr char WITH_TASKS[] =
    R"({"vrop.timer":[{"action":"ToReboot","taskid":1,"timeoffset":60,"enable":1,"week":3},)"
    R"({"action":"ToLedMode","taskid":2,"timeoffset":60,"timeoffset2":90,"enable":1,"week":3}],)"
    R"("vrop.laninfo":[{"mac":"02a0c9000003","devname":"Phone","active":1,"radio":"5G","limitrateswitch":0}]})";

// The rows of the property table that have something in a slot.
template <class Slot>
std::vector<const property_row *> rows_with(Slot property_row::*slot) {
    std::vector<const property_row *> found;
    for (const property_row &row : property_map)
        if (row.*slot != nullptr) found.push_back(&row);
    return found;
}
const property_row &row(const std::string &name);

// Calls the slots with the context "wan0" and usual buffers. A set returns when what it started has ended; a
// get gives the document, compact, "-1" when it was refused.
int set(const std::string &name, const std::string &request, const char *context = "wan0");
std::string get(const std::string &name);

// JSON again without blanks and escaped slashes.
std::string compact(const std::string &json);
