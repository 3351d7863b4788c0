// SPDX-License-Identifier: Apache-2.0
// What is answered over the bus, against the same calls made bare. The calls are found by recording them.
#include <cstring>
#include <string>

#include "bare_bus.h"
#include "benchmarks.h"
#include "binding/tables.h"
#include "core/handles.h"
#include "core/json_path.h"
#include "core/text.h"
#include "devices/runtime.h"

namespace bench {

namespace {

// How long the daemon works on an answer, in microseconds: with the way over the bus and back a call then
// takes the 0.2 ms that the goal is meant for. The simulated one by itself answers from memory, at once.
constexpr int USUAL_ANSWER_TIME = 150;
constexpr double GET_GOAL = 1.15; // at that speed
constexpr char ANSWER_TIME[] = "/sim/answertime";
constexpr int DOCUMENT_MAX = 65536;
constexpr int STATIONS = 128;

void compare_with_calls(benchmark::State &state, double goal, const Turn &work) {
    const BareCalls calls = record_calls(work);
    if (calls.empty()) {
        state.SkipWithError("it failed, or made no calls");
        return;
    }
    compare(state, {.with = "its bus calls bare", .goal = goal}, work, [&] { return calls(); });
}

void get_property(benchmark::State &state, const property_row *row, int answer_time, double goal) {
    static char document[DOCUMENT_MAX];
    if (!set_router_value(ANSWER_TIME, std::to_string(answer_time))) {
        state.SkipWithError("the router does not take an answer time");
        return;
    }
    compare_with_calls(state, goal, [row] {
        document[0] = '\0';
        return row->get("bench", document, sizeof document) == 0 && document[0] == '{';
    });
    set_router_value(ANSWER_TIME, "0");
}

// A list like the router's own, long enough.
std::string station_list() {
    JsonRoot list(json_tokener_parse(router_value("/vrop.laninfo").c_str()));
    json_object *model = json_object_array_get_idx(list.get(), 0);
    std::string text = "[";
    for (int i = 0; i < STATIONS; i++) {
        JsonSetStr(model, nullptr, "mac", format_text<16>("02a0c8%06x", i).text);
        JsonSetStr(model, nullptr, "ipaddr", format_text<20>("192.168.10.%d", i + 2).text);
        text += (i > 0 ? "," : "") + std::string(json_object_to_json_string(model));
    }
    return text + "]";
}

void poll_stations(benchmark::State &state) {
    const std::string home = router_value("/vrop.laninfo");
    if (!set_router_value("/vrop.laninfo", station_list())) {
        state.SkipWithError("the router does not take the list");
        return;
    }
    clear_backupSta();
    check_staList(); // the first poll only takes note of who is there
    compare_with_calls(state, 0, [] {
        check_staList(); // -1: so many do not fit the previous poll's list
        return true;
    });
    set_router_value("/vrop.laninfo", home);
}

} // namespace

void add_property_gets() {
    struct Speed {
        const char *prefix;
        int answer_time;
        double goal;
    };
    for (const Speed &speed : {Speed{"get/", USUAL_ANSWER_TIME, GET_GOAL}, Speed{"get at once/", 0, 0}})
        for (const property_row *row = property_map; row->name != nullptr; row++)
            if (row->get != nullptr)
                benchmark::RegisterBenchmark((std::string(speed.prefix) + row->name).c_str(), get_property,
                                             row, speed.answer_time, speed.goal)
                    ->UseManualTime();
}

void add_station_poll() {
    benchmark::RegisterBenchmark("poll/128 stations", poll_stations)->UseManualTime();
}

} // namespace bench
