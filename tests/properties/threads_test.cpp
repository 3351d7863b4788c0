// SPDX-License-Identifier: Apache-2.0
// Every slot of every row from several threads at once, and the relay.
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include "properties/property_rig.h"
#include "relay/relay.h"

namespace {

constexpr char EVENT[] = R"({"action":"deviceConnect","mac":"A1:B2:C3:D4:E5:F6","devName":"phone","time":1})";

// Without the time of the last change, which each set moves.
std::string steady(const std::string &document) {
    return document.substr(0, document.find("\"openTime\""));
}

TEST(Threads, AllSlotsOfOnePropertyAndTheRelayAtOnce) {
    for (const property_row *row : rows_with(&property_row::get)) {
        SCOPED_TRACE(row->name);
        PropertyRig rig(R"({"vrop.parent.urlcontrol":[],"vrop.parent.timecontrol":[]})"); // a set clears rules
        const std::string document = get(row->name);
        char reply[8];
        const std::function<void()> calls[] = {
            [&] { EXPECT_EQ(steady(get(row->name)), steady(document)); },
            [&] { EXPECT_EQ(row->set ? row->set("wan0", document.c_str(), reply, sizeof reply) : 0, 0); },
            [&] { EXPECT_EQ(row->report ? row->report() : 0, 0); },
            [&] { EXPECT_EQ(row->connectok_hook ? row->connectok_hook() : 0, 0); },
            [&] { EXPECT_EQ(handle_qvtk_event(EVENT, sizeof EVENT), 0); },
        };
        std::vector<std::jthread> threads;
        for (int copies = 0; copies < 3; ++copies)
            for (const auto &call : calls)
                threads.emplace_back([&] {
                    for (int round = 0; round < 10; ++round)
                        call();
                });
    }
    EXPECT_TRUE(recording_sdk::wait_for("TEBRA_SDK_PostEvent"));
}

} // namespace
