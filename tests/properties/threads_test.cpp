// SPDX-License-Identifier: Apache-2.0
// Every slot of every row from several threads at once.
#include <functional>
#include <thread>

#include <gtest/gtest.h>

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

TEST(Threads, SetGetReportAndHookOfOnePropertyAtOnce) {
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
    }
}

} // namespace
