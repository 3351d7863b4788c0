// SPDX-License-Identifier: Apache-2.0
#include "devices/parental_workers.h"

#include "core/clock.h"
#include "core/log.h"
#include "devices/work_lane.h"

std::mutex parentcontrol_mutex;
std::atomic<int> parentcontrol_level;

namespace {

constexpr unsigned RULE_PAUSE = 1;    // seconds: spaces the daemon's writes
constexpr unsigned EXECUTE_PAUSE = 2; // seconds before devices are added or removed

void *push_rule_sets(void *);
void *execute_levels(void *);

// Never destroyed: their threads may outlive main's statics.
WorkLane &rule_sets() {
    static WorkLane &lane = *new WorkLane(push_rule_sets);
    return lane;
}
WorkLane &levels() {
    static WorkLane &lane = *new WorkLane(execute_levels);
    return lane;
}

void *push_rule_sets(void *) {
    while (rule_sets().waiting() > 0)
        rule_sets().do_first();
    return nullptr;
}

// Those that came during the pause wait for the next one.
void *execute_levels(void *) {
    while (const size_t due = levels().waiting()) {
        pause_seconds(EXECUTE_PAUSE);
        for (size_t i = 0; i < due; i++)
            levels().do_first();
    }
    return nullptr;
}

void push_urls(const WebControl &set, LogSite site) {
    std::lock_guard lock(parentcontrol_mutex);
    LOG_AT(site, "count:%zu", set.rules.size());
    for (size_t i = 0; i < set.rules.size(); i++) {
        const UrlRule &rule = set.rules[i];
        if (add_one_parentalWebControl(set.mac.c_str(), rule.open, rule.url.c_str(), set.controlPolicy) != 0)
            LOG_AT(site, "i:%zu add parental Web Control fail", i);
        pause_seconds(RULE_PAUSE);
    }
    if (set_url_filterType(set.mac.c_str(), set.controlPolicy) != 0)
        LOG_AT(site, "set parental Web Control filter type fail");
}

void parentalWebControl_proc(const WebControl &set) {
    push_urls(set, LogSite::here());
}

void parentalNewWebControl_proc(const WebControl &set) {
    push_urls(set, LogSite::here());
}

// Switches the daemon's rule or adds one.
int push_app_rule(const char *mac, AppRule rule, LogSite site) {
    int32_t index = 0;
    int32_t enable = 0;
    const bool known = rule.url.empty()
                           ? find_app_exist_controllist(mac, &rule, &index, &enable) == 0
                           : find_url_exist_controllist(mac, rule.url.c_str(), &index, &enable) == 0;
    if (!known && rule.url.empty()) {
        LOG_AT(site, "appname:%s apptype:%d has no url", rule.appname.c_str(), rule.apptype);
        return -1;
    }
    if (!known) return add_one_parent_appcontrol(mac, &rule);
    if (enable == rule.open) return 0;
    LOG_AT(site, "od enable:%d new enable:%d", enable, rule.open);
    return set_one_parent_appcontrol(mac, &rule, index);
}

void app_control_proc(const AppControl &set) {
    {
        std::lock_guard lock(parentcontrol_mutex);
        for (size_t i = 0; i < set.rules.size(); i++)
            if (push_app_rule(set.mac.c_str(), set.rules[i], LogSite::here()) != 0)
                LOG("i:%zu add parental app Control fail", i);
        if (set_url_filterType(set.mac.c_str(), BLACK) != 0) LOG("set parental Web Control filter type fail");
    }
    LOG("pthread_exit\n");
}

void parentalTimeControl_proc(const TimeControl &set) {
    std::lock_guard lock(parentcontrol_mutex);
    for (size_t i = 0; i < set.rules.size(); i++) {
        if (add_one_parentalTimeControl(set.mac.c_str(), &set.rules[i]) != 0)
            LOG("i:%zu add parental Time Control fail", i);
        pause_seconds(RULE_PAUSE);
    }
}

void parentcontrol_execute_proc(const char *mac, const char *name, int level) {
    switch (level) {
    case LEVEL_ADD:
        start_parentalControl();
        if (add_parentalControl(mac, name) != 0) LOG("add parent Control fail");
        break;
    case LEVEL_REMOVE:
        if (clear_parentControl(mac) != 0) LOG("delete parent Control  device fail");
        break;
    default:
        LOG("not math option");
    }
    parentcontrol_level = LEVEL_NONE;
}

} // namespace

int webControl_threadStart(const WebControl &set) {
    return rule_sets().add({set.mac, LEVEL_NONE, [set] { parentalWebControl_proc(set); }});
}

int newWebControl_threadStart(const WebControl &set) {
    return rule_sets().add({set.mac, LEVEL_NONE, [set] { parentalNewWebControl_proc(set); }});
}

int app_control_threadStart(const AppControl &set) {
    return rule_sets().add({set.mac, LEVEL_NONE, [set] { app_control_proc(set); }});
}

int timeControl_threadStart(const TimeControl &set) {
    return rule_sets().add({set.mac, LEVEL_NONE, [set] { parentalTimeControl_proc(set); }});
}

int parentcontrol_execute_thread(const char *mac, const char *name, int level) {
    if (mac == nullptr || mac[0] == '\0' || name == nullptr) {
        LOG("param is error");
        return -1;
    }
    const std::string given_mac(mac), given_name(name);
    parentcontrol_level = level;
    const int result =
        levels().add({given_mac, level, [given_mac, given_name, level] {
                          parentcontrol_execute_proc(given_mac.c_str(), given_name.c_str(), level);
                      }});
    if (result != 0) parentcontrol_level = LEVEL_NONE; // nothing comes of it
    return result;
}

int waiting_parental_level(const char *mac) {
    return levels().last_level(mac);
}

void wait_for_parental_level(const char *mac) {
    levels().wait_for(mac);
}
