// SPDX-License-Identifier: Apache-2.0
// What the two schedules share: the daemon's timer tasks, each found by its action's name, their days and
// times, and the thread that applies a request's entries one by one.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <new>

#include <json-c/json.h>

#include "core/clock.h"
#include "core/log.h"
#include "core/thread.h"

inline constexpr int SCHEDULE_ENTRIES = 64; // kept of one request
inline constexpr int DAYS = 7;

// A timer task as it is sent; seconds after midnight.
struct TimerTask {
    const char *action;
    int32_t offset;
    int32_t end_offset; // NO_END: the task has no end
    int32_t enable;
    int32_t week; // see week_from_days
};
inline constexpr int32_t NO_END = -1;

// 1 when the daemon has a task with that action, and the id of the last one; 0 when it has none; -1 for a
// null name or no answer. Any thread.
int get_task_status(const char *action, int32_t *task_id);
// The same, keeping the id. 0, or -1 when there is none.
int find_task(const char *action, std::atomic<int32_t> *task_id);
// Write a task; the daemon's result.
int add_task(const TimerTask &task);
int modify_task(const TimerTask &task, int32_t task_id);
int delete_tasks(const char *action); // all tasks of that action

// The daemon's week, one byte: bit 0 is the seventh day, bits 1-6 the first six. Days are shifted as they
// are.
int32_t week_from_days(const int32_t days[DAYS]);
void days_from_week(int32_t week, int32_t days[DAYS]);
// Seven days as a JSON array of integers, owned by the caller; null when memory ran out.
json_object *days_array(const int32_t days[DAYS]);
// Elements of the request's array "daysOfWeek" into days, at most DAYS; what is no number counts as 0. The
// array's length, or -1 when the entry has none.
int read_days(json_object *entry, int32_t days[DAYS]);

// "%02d:%02d" to seconds. 0; -1, with seconds left alone, when null or not two numbers.
int get_timeStamp(const char *text, int32_t *seconds);
// Seconds to "%02d:%02d", cut to length - 1 characters. 0; -1 for a null buffer, a length below 1 or seconds
// -1.
int timeStatmp_to_point(int32_t seconds, char *text, int length);

// One of the daemon's tasks as the cloud sees it: its days, its time under `time_key`, its switch. Owned by
// the caller; null when memory ran out.
json_object *describe_task(json_object *task, const char *time_key, const char *time);

// Adds the array `name` to the document, with what `describe` makes of each of the daemon's tasks with that
// action. 0, also when the daemon does not answer (empty array); -1, said on stderr, when memory ran out.
int fill_schedule(json_object *document, const char *name, const char *action,
                  json_object *(*describe)(json_object *task));

// The entries of one request.
template <class Entry>
struct Schedule {
    int32_t count;
    Entry entries[SCHEDULE_ENTRIES];
};

// Reads the request's array, cut to what a schedule holds. -1 as soon as an entry cannot be read.
template <class Entry>
int read_schedule(json_object *array, Schedule<Entry> *schedule,
                  int (*read_entry)(json_object *element, Entry *entry)) {
    const size_t given = json_object_array_length(array);
    schedule->count = static_cast<int32_t>(std::min<size_t>(given, SCHEDULE_ENTRIES));
    for (int32_t i = 0; i < schedule->count; ++i) {
        json_object *element = json_object_array_get_idx(array, static_cast<size_t>(i));
        if (read_entry(element, &schedule->entries[i]) != 0) return -1;
    }
    return 0;
}

// Adds the entry as the task of that action, or changes the task that there is, whose id is kept. The
// daemon's result; -1 when it does not say which tasks it has.
template <class Entry>
int set_one_entry(const char *action, std::atomic<int32_t> *task_id, const Entry *entry,
                  int (*add)(const Entry *entry), int (*modify)(const Entry *entry)) {
    int32_t found = 0;
    switch (get_task_status(action, &found)) {
    case 0:
        return add(entry);
    case 1:
        *task_id = found;
        return modify(entry);
    default:
        return -1;
    }
}

// One run over a schedule. Each run has a copy of its own: when a set comes while an earlier run works, both
// go on, entry by entry in turn, on the daemon's one task, and whichever writes last wins.
template <class Entry>
struct ScheduleRun {
    Schedule<Entry> schedule;
    int (*apply)(const Entry *entry);

    static void *body(void *argument) {
        auto *run = static_cast<ScheduleRun *>(argument);
        for (int32_t i = run->schedule.count - 1; i >= 0; --i) {
            if (run->apply(&run->schedule.entries[i]) != 0) LOG("apply entry %d fail", i);
            pause_seconds(2);
        }
        delete run;
        puts("pthread_exit");
        return nullptr;
    }
};

// Applies a copy of the schedule on a thread of its own, from the last entry to the first, two seconds apart.
// 0, or -1 when the thread cannot be made.
template <class Entry>
int start_schedule_run(const Schedule<Entry> &schedule, int (*apply)(const Entry *entry)) {
    auto *run = new (std::nothrow) ScheduleRun<Entry>{schedule, apply};
    if (run == nullptr) return -1;
    if (start_detached(ScheduleRun<Entry>::body, run) == 0) return 0;
    delete run;
    return -1;
}
