// SPDX-License-Identifier: Apache-2.0
// The timer service: tasks that the daemon carries out at a time of day.
#include <optional>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char TASKS[] = "/vrop.timer";
constexpr std::size_t TASK_LIMIT = 16;
constexpr int ALL_OF_ACTION = -1111; // as a task id: every task of the action

constexpr Field ACTION = required(choice("action", "ToReboot|ToLedMode|ToWifi"));
constexpr Field START = integer("timeoffset", 0, 86399); // seconds after midnight
constexpr Field END = integer("timeoffset2", 0, 86399);
constexpr Field WEEK = integer("week", 0, 255); // a bit per day, bit 0 is Sunday
constexpr Field SSID_INDEX = integer("ssidindex", 0, 15);
constexpr Field ADD[] = {ACTION, required(START), END, required(flag("enable")), required(WEEK), SSID_INDEX};
constexpr Field MODIFY[] = {
    ACTION,    required(steering(integer("taskid", 0, 0x7fffffff))), START, END, flag("enable"), WEEK,
    SSID_INDEX};
constexpr Field DELETE[] = {ACTION, required(integer("taskid", ALL_OF_ACTION, 0x7fffffff))};

JsonRoot add_task(World &world, const Request &request) {
    json_object *tasks = world.state.at(TASKS);
    if (length_of(tasks) >= TASK_LIMIT) throw Refused("vrop.timer list is full");
    JsonRoot task = copy_json(request.arguments);
    put(task.get(), "taskid", next_number(tasks, "taskid", 1));
    json_object_array_add(tasks, task.release());
    return result();
}

// The index of the task of that id and action; throws Refused when there is none.
int find_task(const World &world, const Request &request) {
    json_object *tasks = world.state.at(TASKS);
    int at = index_of(tasks, "taskid", integer_of(request.arguments, "taskid"));
    const auto index = static_cast<std::size_t>(at);
    if (at < 0 || text_of(element(tasks, index), "action") != text_of(request.arguments, "action"))
        throw Refused("vrop.timer." + text_of(request.arguments, "taskid") + " not found");
    return at;
}

JsonRoot modify_task(World &world, const Request &request) {
    int at = find_task(world, request);
    store_at(world, place_at(TASKS, at), request);
    return result();
}

JsonRoot delete_task(World &world, const Request &request) {
    json_object *tasks = world.state.at(TASKS);
    if (integer_of(request.arguments, "taskid") != ALL_OF_ACTION) {
        json_object_array_del_idx(tasks, static_cast<std::size_t>(find_task(world, request)), 1);
        return result();
    }
    const std::string action = text_of(request.arguments, "action");
    for (std::size_t i = length_of(tasks); i-- > 0;)
        if (text_of(element(tasks, i), "action") == action) json_object_array_del_idx(tasks, i, 1);
    return result();
}

constexpr int DAY = 86400;

// The last moment in (from, to] at which something is due `offset` seconds after the beginning of one of the
// week's days; the offset may lie in the day after.
std::optional<int> last_due(int week, int offset, int from, int to) {
    for (int day = to / DAY; day >= from / DAY - 1; day--) {
        const long long moment = day * static_cast<long long>(DAY) + offset;
        if (moment <= from) break;
        if (moment <= to && (week >> wall_time(day * DAY).weekday & 1)) return static_cast<int>(moment);
    }
    return std::nullopt;
}

// What a task that lasts does when it begins, and when it is over.
void switch_off(World &world, const std::string &action, bool off) {
    if (action == "ToLedMode") world.state.set("/vrop.ledswitch/status", std::string(off ? "off" : "on"));
    if (action != "ToWifi") return;
    for (const char *place :
         {"/vrop.wifi.1.ap/0/enable", "/vrop.wifi.2.ap/0/enable", "/vrop.webwifisimple/wifiswitch"})
        world.state.set(place, off ? 0 : 1);
}

void carry_out(World &world, json_object *task, int from, int to) {
    const std::string action = text_of(task, "action");
    const int week = integer_of(task, "week"), start = integer_of(task, "timeoffset");
    const std::optional<int> begins = last_due(week, start, from, to);
    if (action == "ToReboot") {
        if (begins) world.restart_router(world.state.integer("/sim/restartdelay"));
        return;
    }
    int end = integer_of(task, "timeoffset2");
    if (end <= start) end += DAY;
    const std::optional<int> ends = last_due(week, end, from, to);
    if (begins || ends) switch_off(world, action, begins > ends); // none is less than any
}

constexpr Method ROWS[] = {
    {"vrop.timer",
     "list",
     {},
     show,
     "tasks; times in seconds after midnight, week a bit per day, bit 0 Sunday"},
    {"vrop.timer", "add", ADD, add_task, "the daemon gives the task its id"},
    {"vrop.timer", "delete", DELETE, delete_task, "taskid -1111: all tasks of the action"},
    {"vrop.timer.modify", "set", MODIFY, modify_task, "change the task of that action and id", TASKS},
};

} // namespace

Methods timer_methods() {
    return ROWS;
}

void carry_out_tasks(World &world, int from, int to) {
    json_object *tasks = world.state.find(TASKS);
    for (std::size_t i = 0; i < length_of(tasks); i++)
        if (integer_of(element(tasks, i), "enable")) carry_out(world, element(tasks, i), from, to);
}

} // namespace router
