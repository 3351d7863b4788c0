// SPDX-License-Identifier: Apache-2.0
// Every slot of every row from several threads at once, and the relay.
#include <functional>
#include <thread>

#include <gmock/gmock.h>

#include "core/report_gate.h"
#include "devices/ap_devices.h"
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
        PropertyRig rig(R"({"vrop.parent.control":{"device":[]}})"); // a device's rules are replaced by a set
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

// The names of two devices that are always renamed together.
std::string names_in(const std::string &document) {
    std::string names;
    for (const char *mac : {"02a0c9000003", "02a0c9000004"}) {
        const size_t device = document.find(mac), name = document.find("\"name\":", device);
        names += document.substr(document.find_first_not_of(" ", name + 7), 3);
    }
    return names;
}

TEST(Threads, NoDocumentOfDevicesMixesBeforeAndAfterASet) {
    PropertyRig rig;
    const auto both_named = [](const std::string &name) {
        const std::string rest = R"(","operationType":1,"name":")" + name +
                                 R"(","limitSpeed":{"open":1,"upSpeed":)" + std::to_string(name[0]) +
                                 R"(,"downSpeed":9}})";
        return R"({"apDevices":[{"mac":"02a0c9000003)" + rest + R"(,{"mac":"02a0c9000004)" + rest + "]}";
    };
    ASSERT_EQ(set("apDevices", both_named("A")), 0);
    const auto repeat = [](const std::function<void(int)> &call) {
        return std::jthread([call] {
            for (int round = 0; round < 20; ++round)
                call(round);
        });
    };
    {
        std::vector<std::jthread> threads;
        for (const char *name : {"A", "B"}) {
            threads.push_back(repeat([&, name](int) { EXPECT_EQ(set("apDevices", both_named(name)), 0); }));
            threads.push_back(repeat([](int) {
                EXPECT_THAT(names_in(get("apDevices")), testing::AnyOf(R"("A""A")", R"("B""B")"));
            }));
        }
        threads.push_back(repeat([](int) { EXPECT_EQ(apDevices_event_report(), 0); }));
        threads.push_back(repeat([](int) { EXPECT_EQ(apDevices_report(), 0); }));
        threads.push_back(repeat([](int round) {
            EXPECT_EQ(set("ledStatus", round % 2 ? R"({"ledStatus":"on"})" : R"({"ledStatus":"off"})"), 0);
        }));
    }
    for (const recording_sdk::Call &event : recording_sdk::calls_of("TEBRA_SDK_PostEvent"))
        EXPECT_THAT(names_in(event.arguments.at(1)), testing::AnyOf(R"("A""A")", R"("B""B")"));
    EXPECT_EQ(set_flag, 0);
}

} // namespace
