// SPDX-License-Identifier: Apache-2.0
#include "properties/schedule.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "core/bus.h"
#include "core/json_path.h"

namespace {

constexpr char TIMER[] = "vrop.timer";
constexpr int32_t ALL_TASKS = -1111; // the daemon's marker for every task of an action

json_object *list_tasks(JsonRoot *root) {
    json_object *tasks = get_dev_info(TIMER, "list", root);
    return json_object_is_type(tasks, json_type_array) ? tasks : nullptr;
}

bool has_action(json_object *task, const char *action) {
    return strcmp(_json_get_str(task, "action"), action) == 0;
}

void add_members(const TimerTask &task, const int32_t *task_id, BusMessage *message) {
    message->text("action", task.action);
    if (task_id != nullptr) message->integer("taskid", *task_id);
    message->integer("timeoffset", task.offset);
    if (task.end_offset != NO_END) message->integer("timeoffset2", task.end_offset);
    message->integer("enable", task.enable).integer("week", task.week).integer("ssidindex", 0);
}

} // namespace

int get_task_status(const char *action, int32_t *task_id) {
    if (action == nullptr || task_id == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    JsonRoot root;
    json_object *tasks = list_tasks(&root);
    if (tasks == nullptr) return -1;
    const size_t n = json_object_array_length(tasks);
    LOG("n:%zu", n);
    int found = 0;
    for (size_t i = 0; i < n; ++i) {
        json_object *task = json_object_array_get_idx(tasks, i);
        if (has_action(task, action)) {
            *task_id = _json_get_int(task, "taskid");
            found = 1;
        }
    }
    return found;
}

int find_task(const char *action, std::atomic<int32_t> *task_id) {
    int32_t found = 0;
    if (get_task_status(action, &found) != 1) return -1;
    *task_id = found;
    return 0;
}

int add_task(const TimerTask &task) {
    BusMessage message;
    add_members(task, nullptr, &message);
    return set_dev_info(TIMER, "add", message);
}

int modify_task(const TimerTask &task, int32_t task_id) {
    BusMessage message;
    add_members(task, &task_id, &message);
    return set_dev_info("vrop.timer.modify", "set", message);
}

int delete_tasks(const char *action) {
    BusMessage message;
    message.text("action", action).integer("taskid", ALL_TASKS);
    return set_dev_info(TIMER, "delete", message);
}

int32_t week_from_days(const int32_t days[DAYS]) {
    uint32_t week = static_cast<uint32_t>(days[DAYS - 1]);
    for (int k = 1; k < DAYS; ++k)
        week |= static_cast<uint32_t>(days[k - 1]) << k;
    return static_cast<int32_t>(week & 0xFFU);
}

void days_from_week(int32_t week, int32_t days[DAYS]) {
    const auto bits = static_cast<uint32_t>(week);
    for (int k = 1; k < DAYS; ++k)
        days[k - 1] = static_cast<int32_t>(bits >> k & 1U);
    days[DAYS - 1] = static_cast<int32_t>(bits & 1U);
}

json_object *days_array(const int32_t days[DAYS]) {
    JsonRoot array(json_object_new_array());
    for (int i = 0; i < DAYS; ++i)
        JsonAppend(array.get(), JsonRoot(json_object_new_int(days[i])));
    return array.release();
}

int read_days(json_object *entry, int32_t days[DAYS]) {
    json_object *array = nullptr;
    if (JsonGetObj(entry, "daysOfWeek", &array) == 0 || !json_object_is_type(array, json_type_array))
        return -1;
    const size_t length = json_object_array_length(array);
    for (size_t i = 0; i < std::min<size_t>(length, DAYS); ++i)
        days[i] = json_object_get_int(json_object_array_get_idx(array, i));
    return static_cast<int>(length);
}

int get_timeStamp(const char *text, int32_t *seconds) {
    int hours = 0;
    int minutes = 0;
    if (text == nullptr || seconds == nullptr || sscanf(text, "%02d:%02d", &hours, &minutes) != 2) return -1;
    *seconds = hours * 3600 + minutes * 60;
    return 0;
}

int timeStatmp_to_point(int32_t seconds, char *text, int length) {
    if (text == nullptr || length < 1 || seconds == -1) return -1;
    snprintf(text, static_cast<size_t>(length), "%02d:%02d", seconds / 3600, seconds % 3600 / 60);
    return 0;
}

json_object *describe_task(json_object *task, const char *time_key, const char *time) {
    int32_t days[DAYS];
    days_from_week(_json_get_int(task, "week"), days);
    JsonRoot entry(json_object_new_object());
    if (JsonSetObj(entry.get(), nullptr, "daysOfWeek", JsonRoot(days_array(days))) == 0) return nullptr;
    JsonSetStr(entry.get(), nullptr, time_key, time);
    JsonSetBool(entry.get(), nullptr, "open", _json_get_int(task, "enable") != 0);
    return entry.release();
}

int fill_schedule(json_object *document, const char *name, const char *action,
                  json_object *(*describe)(json_object *task)) {
    JsonRoot array(json_object_new_array());
    if (!array) {
        perror("JsonArrayNew");
        return -1;
    }
    JsonRoot root;
    json_object *tasks = list_tasks(&root);
    const size_t n = tasks != nullptr ? json_object_array_length(tasks) : 0;
    for (size_t i = 0; i < n; ++i) {
        json_object *task = json_object_array_get_idx(tasks, i);
        if (has_action(task, action)) JsonAppend(array.get(), JsonRoot(describe(task)));
    }
    JsonSetObj(document, nullptr, name, std::move(array));
    return 0;
}
