// SPDX-License-Identifier: Apache-2.0
// Every slot of every row from several threads at once, and the relay.
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include "cloud/relay.h"
#include "properties/property_rig.h"

namespace {

// Without the time of the last change, which each set moves.
std::string steady(const std::string &document) {
    return document.substr(0, document.find("\"openTime\""));
}

constexpr int THREADS = 3; // per slot
constexpr int ROUNDS = 10;

void each_round(const std::function<void()> &call) {
    for (int i = 0; i < ROUNDS; ++i)
        call();
}

constexpr char EVENT[] = R"({"action":"deviceConnect","mac":"A1:B2:C3:D4:E5:F6","devName":"phone","time":1})";

TEST(Threads, AllSlotsOfOnePropertyAndTheRelayAtOnce) {
    for (const property_row *row : rows_with_get()) {
        SCOPED_TRACE(row->name);
        PropertyRig rig;
        const std::string document = get(row->name);
        std::vector<std::jthread> threads;
        for (int i = 0; i < THREADS; ++i) {
            threads.emplace_back(
                [&] { each_round([&] { EXPECT_EQ(steady(get(row->name)), steady(document)); }); });
            if (row->set != nullptr) {
                threads.emplace_back([&] {
                    each_round([&] {
                        char reply[8];
                        EXPECT_EQ(row->set("wan0", document.c_str(), reply, sizeof reply), 0);
                    });
                });
            }
            if (row->report != nullptr)
                threads.emplace_back([&] { each_round([&] { EXPECT_EQ(row->report(), 0); }); });
            if (row->connectok_hook != nullptr)
                threads.emplace_back([&] { each_round([&] { EXPECT_EQ(row->connectok_hook(), 0); }); });
        }
        threads.emplace_back(
            [] { each_round([] { EXPECT_EQ(handle_qvtk_event(EVENT, sizeof EVENT), 0); }); });
    }
    EXPECT_TRUE(recording_sdk::wait_for("TEBRA_SDK_PostEvent"));
}

} // namespace
