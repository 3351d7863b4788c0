// SPDX-License-Identifier: Apache-2.0
#include "properties/time_reboot.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include "core/json_path.h"
#include "core/text.h"
#include "properties/field.h"
#include "properties/property.h"

namespace {

constexpr char ACTION[] = "ToReboot";

Schedule<RebootEntry> timeReboot_list;
std::atomic<int32_t> task_id; // of the daemon's reboot task
std::mutex reboot_lock;
char last_sent[1024];

const Property PROPERTY = {
    .name = "timeReboot",
    .start = "timeReboot ",
    .lock = &reboot_lock,
    .fill = get_timeReboot_config,
    .request_type = json_type_array,
    .parse_failed = "JSON Parse fail",
    .changed = "timeReboot have change buf:",
    .report_size = sizeof(last_sent),
    .last_sent = last_sent,
    .last_sent_size = sizeof(last_sent),
};

// What is no object leaves an entry that is not applied.
int read_time_reboot(json_object *element, RebootEntry *entry) {
    if (!json_object_is_type(element, json_type_object)) return 0;
    const char *time = request_text(element, "time");
    copy_text(entry->time, time != nullptr ? time : "3:00");
    entry->enable = request_integer(element, "open");
    int32_t days[DAYS] = {};
    const int retry = read_days(element, days);
    if (retry == -1) return 0;
    LOG("retry:%d", retry);
    entry->day_count = retry;
    if (retry == DAYS) std::copy(days, days + DAYS, entry->days + 1);
    return 0;
}

int apply_time_reboot(json_object *member, const char *) {
    Schedule<RebootEntry> request{};
    read_schedule(member, &request, read_time_reboot);
    timeReboot_list = request;
    set_timeReboot_config();
    return 0;
}

// The entry as a task; false, after having logged why, when it cannot be one.
bool make_task(const RebootEntry *entry, TimerTask *task) {
    if (entry == nullptr) {
        LOG("param is NULL");
        return false;
    }
    if (entry->day_count != DAYS) {
        LOG("retry day is not 7");
        return false;
    }
    *task = {ACTION, 0, NO_END, entry->enable, week_from_days(entry->days + 1)};
    get_timeStamp(entry->time, &task->offset);
    LOG("time_s:%s", entry->time);
    LOG("timeoffset:%d", task->offset);
    LOG("reboot_flag:0x%X", static_cast<unsigned>(task->week));
    LOG("enable:%d", task->enable);
    return true;
}

int log_refusal(int result) {
    if (result != 0) LOG("set timeReboot config fail");
    return result;
}

json_object *describe_time_reboot(json_object *task) {
    LOG("week:0x%X\n", static_cast<unsigned>(_json_get_int(task, "week")));
    const int32_t offset = _json_get_int(task, "timeoffset");
    LOG("timeoffset:%d", offset);
    char time[32] = "";
    timeStatmp_to_point(offset, time, sizeof(time));
    return describe_task(task, "time", time);
}

} // namespace

int timeReboot_init() {
    return property_init(PROPERTY, [] { timeReboot_list = {}; });
}

int timeReboot_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(PROPERTY, {context, value, reply, reply_length}, apply_time_reboot);
}

int timeReboot_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int timeReboot_report() {
    return property_report(PROPERTY);
}

int set_timeReboot_config() {
    return timeReboot_threadStart();
}

int timeReboot_threadStart() {
    return start_schedule_run(timeReboot_list, set_one_timeReboot);
}

int set_one_timeReboot(const RebootEntry *entry) {
    return set_one_entry(ACTION, &task_id, entry, add_one_timeReboot, modify_one_timeReboot);
}

int add_one_timeReboot(const RebootEntry *entry) {
    TimerTask task{};
    return make_task(entry, &task) ? log_refusal(add_task(task)) : -1;
}

int modify_one_timeReboot(const RebootEntry *entry) {
    TimerTask task{};
    return make_task(entry, &task) ? log_refusal(modify_task(task, task_id)) : -1;
}

int get_timeReboot_config(json_object *document) {
    return fill_schedule(document, "timeReboot", ACTION, describe_time_reboot);
}

json_object *get_timeReboot_dayOfWeek_obj(const int32_t days[DAYS]) {
    return days_array(days);
}

int update_taskId() {
    return find_task(ACTION, &task_id);
}

int delete_timeReboot_config() {
    const int result = delete_tasks(ACTION);
    if (result != 0) LOG("delete timeReboot config fail");
    return result;
}
