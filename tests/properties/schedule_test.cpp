// SPDX-License-Identifier: Apache-2.0
// The threads that apply schedules: each its own request, last entry first, two seconds apart.
#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

#include <gmock/gmock.h>

#include "core/text.h"
#include "properties/property_rig.h"

namespace {

struct Kind {
    const char *property, *action, *time_key;
    const char *end, *end_sent; // what a frame adds to the time
};
constexpr Kind KINDS[] = {{"timeReboot", "ToReboot", "time", "", ""},
                          {"timeLed", "ToLedMode", "timeFrame", "-2:00", R"(,"timeoffset2":7200)"}};

// Entry i of request r and what is sent of it; each part depends on one of them, so that a torn one shows.
std::string request(const Kind &kind, int r, int entries) {
    std::string list;
    for (int i = 0; i < entries; ++i)
        list += format_text<128>(R"(%s{"%s":"%d:%d%s","open":%d,"daysOfWeek":[%d,%d,%d,%d,%d,%d,0]})",
                                 i > 0 ? "," : "", kind.time_key, r, i, kind.end, r & 1, i & 1, i >> 1 & 1,
                                 i >> 2 & 1, i >> 3 & 1, i >> 4 & 1, i >> 5 & 1)
                    .text;
    return R"({")" + std::string(kind.property) + R"(":[)" + list + "]}";
}
std::string sent(const Kind &kind, int r, int i) {
    return R"(vrop.timer.modify set {"action":")" + std::string(kind.action) +
           format_text<128>(R"(","taskid":9,"timeoffset":%d%s,"enable":%d,"week":%d,"ssidindex":0})",
                            r * 3600 + i * 60, kind.end_sent, r & 1, (i & 63) << 1)
               .text;
}

Texts backwards(const Kind &kind, int r, int entries) {
    Texts texts;
    for (int i = entries; i-- > 0;)
        texts.push_back(sent(kind, r, i));
    return texts;
}

// A home with one task of that kind.
std::string with_task(const Kind &kind) {
    return R"({"vrop.timer":[{"action":")" + std::string(kind.action) + R"(","taskid":9}]})";
}

TEST(Appliers, WalkTheListBackwards) {
    for (const Kind &kind : KINDS) {
        for (const int given : {0, 1, 63, 64, 65, 10000}) {
            SCOPED_TRACE(std::string(kind.property) + " " + std::to_string(given));
            const int kept = std::min(given, 64);
            PropertyRig rig(with_task(kind));
            EXPECT_EQ(set(kind.property, request(kind, 1, given)), 0);
            EXPECT_EQ(rig.writes(), backwards(kind, 1, kept));
            EXPECT_EQ(moving_clock::pauses(),
                      std::vector<moving_clock::Millis>(static_cast<size_t>(kept), 2000));
        }
    }
}

// Two sets at once, or one while the other's entries are being applied. They share nothing but the daemon's
// task: whole entries, each run in its own order.
TEST(Appliers, OfTwoSetsDoNotMeet) {
    constexpr int ENTRIES = 40;
    for (const Kind &kind : KINDS) {
        for (const bool later : {false, true}) {
            PropertyRig rig(with_task(kind));
            const auto send = [&kind](int r) {
                char reply[8];
                row(kind.property).set("wan0", request(kind, r, ENTRIES).c_str(), reply, sizeof reply);
            };
            if (later)
                moving_clock::on_pause([send, once = std::make_shared<std::atomic<bool>>(true)](auto) {
                    if (once->exchange(false)) send(2);
                });
            {
                std::jthread first(send, 1);
                if (!later) send(2);
            }
            ASSERT_TRUE(moving_clock::wait_for_pauses(2 * ENTRIES));
            Texts writes = rig.writes(), runs = backwards(kind, 1, ENTRIES),
                  second = backwards(kind, 2, ENTRIES);
            runs.insert(runs.end(), second.begin(), second.end());
            std::stable_partition(writes.begin(), writes.end(), [&](const std::string &write) {
                return std::count(second.begin(), second.end(), write) == 0;
            });
            EXPECT_EQ(writes, runs);
        }
    }
}

} // namespace
