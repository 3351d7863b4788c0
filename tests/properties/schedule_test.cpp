// SPDX-License-Identifier: Apache-2.0
// The threads that apply schedules: each its own request, last entry first, two seconds apart.
#include <atomic>
#include <memory>
#include <thread>

#include <gmock/gmock.h>

#include "properties/property_rig.h"

namespace {

using testing::Each;
using testing::SizeIs;

// Entry i of request r; everything in it depends on both, so that a torn one shows.
struct Entry {
    int request, index;
    int minutes() const { return request * 100 + index; }
    std::string day(int k) const { return std::to_string((index >> k) & 1); }
    std::string days() const {
        std::string text;
        for (int k = 0; k < 7; ++k)
            text += (k > 0 ? "," : "") + day(k);
        return text;
    }
    int week() const { return (index & 63) << 1 | ((index >> 6) & 1); }
    std::string time() const { return std::to_string(minutes() / 60) + ":" + std::to_string(minutes() % 60); }
};

struct Kind {
    const char *property, *action, *time_key, *end; // `end`: what a frame adds to the time
    std::string request(int number, int entries) const {
        std::string list;
        for (int i = 0; i < entries; ++i) {
            const Entry entry{number, i};
            list += std::string(i > 0 ? "," : "") + R"({")" + time_key + R"(":")" + entry.time() + end +
                    R"(","open":)" + std::to_string(number & 1) + R"(,"daysOfWeek":[)" + entry.days() + "]}";
        }
        return R"({")" + std::string(property) + R"(":[)" + list + "]}";
    }
    // The members of the entry's message behind the task id.
    std::string message(const Entry &entry) const {
        return R"("timeoffset":)" + std::to_string(entry.minutes() * 60) +
               (*end != '\0' ? R"(,"timeoffset2":7200)" : "") + R"(,"enable":)" +
               std::to_string(entry.request & 1) + R"(,"week":)" + std::to_string(entry.week()) +
               R"(,"ssidindex":0})";
    }
};
constexpr Kind KINDS[] = {{"timeReboot", "ToReboot", "time", ""},
                          {"timeLed", "ToLedMode", "timeFrame", "-2:00"}};

// What the rig's writes must be for entries in that order, on the one task there is.
Texts messages(const Kind &kind, const std::vector<Entry> &entries) {
    Texts texts;
    for (const Entry &entry : entries)
        texts.push_back(R"(vrop.timer.modify set {"action":")" + std::string(kind.action) +
                        R"(","taskid":9,)" + kind.message(entry));
    return texts;
}

std::vector<Entry> backwards(int request, int entries) {
    std::vector<Entry> order;
    for (int i = entries; i-- > 0;)
        order.push_back({request, i});
    return order;
}

struct TimerRig : PropertyRig {
    explicit TimerRig(const Kind &kind) {
        router.set_state("/vrop.timer", R"([{"action":")" + std::string(kind.action) + R"(","taskid":9}])");
    }
};

TEST(Appliers, WalkTheListBackwards) {
    for (const Kind &kind : KINDS) {
        for (const int given : {0, 1, 63, 64, 65, 10000}) {
            SCOPED_TRACE(std::string(kind.property) + " " + std::to_string(given));
            const int kept = std::min(given, 64);
            TimerRig rig(kind);
            EXPECT_EQ(set(kind.property, kind.request(1, given)), 0);
            EXPECT_EQ(rig.writes(), messages(kind, backwards(1, kept)));
            EXPECT_THAT(moving_clock::pauses(), testing::AllOf(SizeIs(kept), Each(2000)));
        }
    }
}

// Runs of two requests, which share nothing but the daemon's task: whole entries, each run in its own order.
void expect_interleaved(const Kind &kind, const Texts &writes, int entries) {
    Texts of_run[2];
    for (const std::string &write : writes)
        for (int run : {0, 1})
            if (const Texts all = messages(kind, backwards(run + 1, entries));
                std::find(all.begin(), all.end(), write) != all.end())
                of_run[run].push_back(write);
    EXPECT_EQ(writes.size(), 2U * static_cast<size_t>(entries));
    for (int run : {0, 1})
        EXPECT_EQ(of_run[run], messages(kind, backwards(run + 1, entries)));
}

TEST(Appliers, TwoSetsAtOnce) {
    constexpr int ENTRIES = 40;
    for (const Kind &kind : KINDS) {
        TimerRig rig(kind);
        char reply[8];
        std::vector<std::jthread> sets;
        for (int number : {1, 2})
            sets.emplace_back([&kind, number, &reply] {
                row(kind.property).set("wan0", kind.request(number, ENTRIES).c_str(), reply, sizeof reply);
            });
        sets.clear();
        ASSERT_TRUE(moving_clock::wait_for_pauses(2 * ENTRIES));
        expect_interleaved(kind, rig.writes(), ENTRIES);
    }
}

TEST(Appliers, ASetWhileOneWorks) {
    constexpr int ENTRIES = 5;
    for (const Kind &kind : KINDS) {
        TimerRig rig(kind);
        // the hook outlives this round: the last pause is counted before its hook has run
        moving_clock::on_pause(
            [&kind, once = std::make_shared<std::atomic<bool>>(true)](moving_clock::Millis) {
                char reply[8];
                if (once->exchange(false))
                    row(kind.property).set("wan0", kind.request(2, ENTRIES).c_str(), reply, sizeof reply);
            });
        EXPECT_EQ(set(kind.property, kind.request(1, ENTRIES)), 0);
        ASSERT_TRUE(moving_clock::wait_for_pauses(2 * ENTRIES));
        expect_interleaved(kind, rig.writes(), ENTRIES);
    }
}

// A request that is refused as a whole leaves nothing behind that a later run would apply.
TEST(Appliers, ARefusedRequestStartsNone) {
    const Kind &kind = KINDS[1];
    TimerRig rig(kind);
    std::string request = kind.request(1, 3);
    request.replace(request.rfind("-2:00"), 5, "");
    EXPECT_EQ(set(kind.property, request), -1);
    EXPECT_EQ(set(kind.property, kind.request(2, 1)), 0);
    EXPECT_EQ(rig.writes(), messages(kind, backwards(2, 1)));
}

} // namespace
