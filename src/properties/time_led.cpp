// SPDX-License-Identifier: Apache-2.0
#include "properties/time_led.h"

#include <atomic>
#include <cstring>
#include <mutex>

#include "core/json_path.h"
#include "core/text.h"
#include "properties/field.h"
#include "properties/property.h"

namespace {

constexpr char ACTION[] = "ToLedMode";

Schedule<LedEntry> timeLed_list;
std::atomic<int32_t> task_id; // of the daemon's LED task
std::mutex led_schedule_lock;
char last_sent[128]; // shorter than the document can be: a longer one never compares equal

const Property PROPERTY = {
    .name = "timeLed",
    .start = "timeLed ",
    .lock = &led_schedule_lock,
    .fill = get_timeLed_config,
    .request_type = json_type_array,
    .parse_tag = "cJSON_Parse",
    .parse_failed = "cJSON Parse fail",
    .changed = "timeLed have change buf:",
    .report_size = 1024,
    .last_sent = last_sent,
    .last_sent_size = sizeof(last_sent),
};

// 0, or -1 when the entry has no usable time frame.
int read_time_led(json_object *element, LedEntry *entry) {
    const char *given =
        json_object_is_type(element, json_type_object) ? request_text(element, "timeFrame") : nullptr;
    if (given == nullptr) {
        perror("JsonGetObj");
        LOG("Json Get time frame fail");
        return -1;
    }
    const auto frame = format_text<64>("%s", *given != '\0' ? given : "00:00-06:00");
    if (cut_timeLed_timeFrame(frame.text, entry->start, entry->end) != 0) {
        perror("cut_timeLed_timeFrame");
        LOG("Json time frame  format is wrong");
        return -1;
    }
    LOG("timeStart:%s timeEnd:%s", entry->start, entry->end);
    entry->enable = request_integer(element, "open");
    read_days(element, entry->days);
    return 0;
}

// A bad entry fails the whole request and the list stays as it was.
int apply_time_led(json_object *member, const char *) {
    Schedule<LedEntry> request{};
    if (read_schedule(member, &request, read_time_led) != 0) return -1;
    timeLed_list = request;
    return set_timeLed_config();
}

TimerTask make_task(const LedEntry &entry) {
    TimerTask task{ACTION, 0, 0, entry.enable, week_from_days(entry.days)};
    get_timeStamp(entry.start, &task.offset);
    get_timeStamp(entry.end, &task.end_offset);
    return task;
}

template <typename Write>
int write_entry(const LedEntry *entry, Write write, LogSite site = LogSite::here()) {
    if (entry == nullptr) {
        LOG_AT(site, "param is NULL");
        return -1;
    }
    const int result = write(make_task(*entry));
    LOG_AT(site, "add timeLed %s", result == 0 ? "ok" : "fail"); // also of a change
    return result;
}

json_object *describe_time_led(json_object *task) {
    char start[32] = "";
    char end[32] = "";
    timeStatmp_to_point(_json_get_int(task, "timeoffset"), start, sizeof(start));
    timeStatmp_to_point(_json_get_int(task, "timeoffset2"), end, sizeof(end));
    return describe_task(task, "timeFrame", format_text<64>("%s-%s", start, end).text);
}

} // namespace

int timeLed_init() {
    return property_init(PROPERTY, [] { timeLed_list = {}; });
}

int timeLed_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(PROPERTY, {context, value, reply, reply_length}, apply_time_led);
}

int timeLed_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int timeLed_report() {
    return property_report(PROPERTY);
}

int set_timeLed_config() {
    return timeLed_threadStart();
}

int timeLed_threadStart() {
    return start_schedule_run(timeLed_list, set_one_timeLed);
}

int set_one_timeLed(const LedEntry *entry) {
    return set_one_entry(ACTION, &task_id, entry, add_one_timeLed, modify_one_timeLed);
}

int add_one_timeLed(const LedEntry *entry) {
    return write_entry(entry, add_task);
}

int modify_one_timeLed(const LedEntry *entry) {
    return write_entry(entry, [](const TimerTask &task) { return modify_task(task, task_id); });
}

int cut_timeLed_timeFrame(const char *frame, char (&start)[8], char (&end)[8]) {
    if (frame == nullptr) return -1;
    auto copy = format_text<32>("%s", frame);
    char *hyphen = strchr(copy.text, '-');
    if (hyphen == nullptr) return -1;
    *hyphen = '\0';
    copy_text(start, copy.text);
    copy_text(end, hyphen + 1);
    return 0;
}

int get_timeLed_config(json_object *document) {
    return fill_schedule(document, "timeLed", ACTION, describe_time_led);
}

json_object *get_timeLed_dayOfWeek_obj(const int32_t days[DAYS]) {
    return days_array(days);
}

int get_taskId() {
    return find_task(ACTION, &task_id);
}

int delete_timeLed_config() {
    const int result = delete_tasks(ACTION);
    if (result != 0) LOG("delete timeLed config fail");
    return result;
}
