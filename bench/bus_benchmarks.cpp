// SPDX-License-Identifier: Apache-2.0
// What is answered over the bus, against the same calls made bare. The calls are found by recording them.
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <malloc.h>
#include <string>

#include "bare_bus.h"
#include "benchmarks.h"
#include "binding/tables.h"
#include "core/files.h"
#include "core/handles.h"
#include "devices/device_document.h"
#include "devices/station_list.h"
#include "household.h"

namespace bench {

namespace {

// How long the daemon works on an answer, in microseconds: with the way over the bus and back a call then
// takes the 0.2 ms that the goal is meant for. The simulated one by itself answers from memory, at once.
constexpr int USUAL_ANSWER_TIME = 150;
constexpr double GET_GOAL = 1.15; // at that speed
constexpr char ANSWER_TIME[] = "/sim/answertime";
constexpr int DOCUMENT_MAX = 65536;
constexpr double DEVICES_GOAL = 1.3; // of 128 of them

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

// Runs the benchmark on a router with many client devices.
void with_household(benchmark::State &state, void (*run)(benchmark::State &)) {
    const Household household;
    if (household.complete())
        run(state);
    else
        state.SkipWithError("the router does not take the devices");
}

void poll_stations(benchmark::State &state) {
    clear_backupSta();
    check_staList(); // the first poll only takes note of who is there
    compare_with_calls(state, 0, [] {
        check_staList(); // -1: so many do not fit the previous poll's list
        return true;
    });
}

const property_row *devices_row() {
    const property_row *row = property_map;
    while (strcmp(row->name, "apDevices") != 0)
        row++;
    return row;
}

void get_devices(benchmark::State &state) {
    get_property(state, devices_row(), USUAL_ANSWER_TIME, DEVICES_GOAL);
}

// A figure of this process's status, in KiB.
double status_of(const char *name) {
    std::string text;
    read_file("/proc/self/status", 8192, &text);
    const size_t at = text.find(name);
    return at == std::string::npos ? 0 : atof(text.c_str() + at + strlen(name));
}

// What one document takes at its height, in memory that was not there before.
void document_memory(benchmark::State &state) {
    double needed = 0;
    size_t length = 0;
    for (auto turn : state) {
        static_cast<void>(turn);
        malloc_trim(0);
        const Descriptor marks(open("/proc/self/clear_refs", O_WRONLY | O_CLOEXEC));
        if (!write_all(marks.get(), "5", 1)) { // the peak starts anew
            state.SkipWithError("the peak cannot be reset");
            return;
        }
        const double before = status_of("VmRSS:");
        const JsonRoot document(get_apDevice_config(DOCUMENT_PROPERTY));
        length = strlen(json_object_to_json_string(document.get()));
        needed = status_of("VmHWM:") - before;
        state.SetIterationTime(1e-3);
    }
    state.counters["measured"] = needed;
    state.counters["bare"] = static_cast<double>(length) / 1024;
    state.counters["ratio"] = needed / state.counters["bare"];
    state.counters["amount"] = 1;
    state.counters["goal"] = 0;
    state.SetLabel("KiB its text");
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
                benchmark::RegisterBenchmark(
                    (std::string(speed.prefix) + row->name).c_str(), get_property, row, speed.answer_time,
                    row == devices_row() && speed.goal > 0 ? DEVICES_GOAL : speed.goal)
                    ->UseManualTime();
}

void add_many_stations() {
    struct Work {
        const char *name;
        void (*run)(benchmark::State &);
    };
    for (const Work &work : {Work{"poll/128 stations", poll_stations},
                             {"get/apDevices of 128 stations", get_devices},
                             {"memory of that document", document_memory}})
        benchmark::RegisterBenchmark(work.name, with_household, work.run)->UseManualTime();
}

} // namespace bench
