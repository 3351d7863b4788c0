// SPDX-License-Identifier: Apache-2.0
#include "devices/apply_settings.h"

#include "core/clock.h"
#include "core/log.h"
#include "core/text.h"
#include "devices/device_lookups.h"
#include "devices/mac_filter.h"
#include "devices/online_notice.h"

namespace {

constexpr unsigned PARENTAL_PAUSE = 10; // seconds in which the daemon takes the first rules over

int apply_black(const DeviceSettings &settings) {
    if (settings.blackEnable == 0) return delete_macFilter(settings.mac);
    if (get_macFilter_enable(settings.mac) == 1) return 0; // a second entry would outlive its release
    if (const int result = start_macFilter(); result != 0) return result;
    LOG("add device:%s mac:%s filter", settings.name, settings.mac);
    return add_macFilter(1, settings.mac);
}

int apply_disconnect(const DeviceSettings &settings) {
    char name[DEVICE_NAME_SIZE];
    supervised_name(settings, name);
    return set_disconnectInfo(settings.disconnect, settings.mac, name);
}

int apply_name(const DeviceSettings &settings) {
    LOG("modify name");
    return set_apDevice_name(settings.name, settings.mac);
}

int apply_limit(const DeviceSettings &settings) {
    return set_limitSpeed(settings.limit, settings.mac);
}

int apply_notice(const DeviceSettings &settings) {
    return update_onlineNotice(settings.mac, settings.onlineNotice);
}

// The steps of the plain settings, in their order.
struct Step {
    const char *flag_name;
    int *flag;
    bool (*is_asked)(const DeviceSettings &settings);
    int (*apply)(const DeviceSettings &settings);
};
constexpr Step STEPS[] = {
    {"black_flag", &black_flag, [](const DeviceSettings &s) { return s.blackEnable != -1; }, apply_black},
    {"disconnect_flag", &disconnect_flag, [](const DeviceSettings &s) { return s.disconnect != -1; },
     apply_disconnect},
    {"name_flag", &name_flag, [](const DeviceSettings &s) { return s.has_name; }, apply_name},
    {"limitSpeed_flag", &limitSpeed_flag, [](const DeviceSettings &s) { return s.has_limit; }, apply_limit},
    {"notice_flag", &notice_flag, [](const DeviceSettings &s) { return s.onlineNotice != -1; }, apply_notice},
};

// A removal that waits is carried out first, so that it does not undo this.
int supervise(const DeviceSettings &settings, const char *name) {
    wait_for_parental_level(settings.mac);
    if (judge_parentalControl(settings.mac) == 0) return 0;
    const int result = add_parentalControl(settings.mac, name);
    if (result != 0) LOG("add parent Control fail");
    return result;
}

// More devices than a home has would keep everybody else from the inventory for a day.
void wait_for_takeover(const char *mac) {
    if (parental_waits == MOST_PARENTAL_WAITS) {
        LOG("mac:%s %d devices have been waited for, no wait", mac, MOST_PARENTAL_WAITS);
        return;
    }
    parental_waits++;
    pause_seconds(PARENTAL_PAUSE);
}

int start_web_rules(const DeviceSettings &settings) {
    int result = 0;
    if (settings.sites.rules.empty() && settings.urls.rules.empty()) LOG("no need set parent url control");
    if (const size_t count = settings.sites.rules.size(); count > 0) {
        LOG("add parental_webControl num:%zu", count);
        result = webControl_threadStart(settings.sites);
    }
    if (const size_t count = settings.urls.rules.size(); count > 0) {
        LOG("add parental_webControl num:%zu", count);
        result |= newWebControl_threadStart(settings.urls);
    }
    return result;
}

int apply_parental_rules(const DeviceSettings &settings, const char *name) {
    supervise(settings, name);
    set_parent_enable(settings.mac, name, settings.parentalEnable, settings.timeControlEnable,
                      settings.webControlEnable);
    int result = start_web_rules(settings);
    if (const size_t count = settings.times.rules.size(); count > 0) {
        LOG("add parentalTimeControl num:%zu", count);
        result = timeControl_threadStart(settings.times);
    }
    parentControl_flag = 0;
    wait_for_takeover(settings.mac);
    return result;
}

// Whether the device is to come under supervision or out of it, after what waits for it already.
int wanted_level(const DeviceSettings &settings) {
    if (settings.parentFlag != 0 && settings.parentFlag != 1) return LEVEL_NONE;
    const int waiting = waiting_parental_level(settings.mac);
    const bool supervised =
        waiting != LEVEL_NONE ? waiting == LEVEL_ADD : judge_parentalControl(settings.mac) == 0;
    if (settings.parentFlag == 1) return supervised ? LEVEL_NONE : LEVEL_ADD;
    return supervised ? LEVEL_REMOVE : LEVEL_NONE;
}

int apply_app_rules(const DeviceSettings &settings, const char *name) {
    parent_app_flag = 0;
    start_parentalControl();
    const int result = supervise(settings, name);
    return settings.apps.rules.empty() ? result : app_control_threadStart(settings.apps);
}

int apply_parental_control(const DeviceSettings &settings) {
    LOG("operationType:%d parentControl_flag:%d parentFlag:%d", settings.operationType, parentControl_flag,
        settings.parentFlag);
    char name[DEVICE_NAME_SIZE];
    if (settings.operationType == OPERATION_PARENTAL) {
        supervised_name(settings, name);
        return apply_parental_rules(settings, name);
    }
    if (const int level = wanted_level(settings); level != LEVEL_NONE) {
        supervised_name(settings, name);
        return parentcontrol_execute_thread(settings.mac, name, level);
    }
    if (settings.operationType != OPERATION_SETTINGS || parent_app_flag == 0 || !settings.has_apps) return 0;
    supervised_name(settings, name);
    return apply_app_rules(settings, name);
}

} // namespace

void supervised_name(const DeviceSettings &settings, char (&name)[DEVICE_NAME_SIZE]) {
    copy_text(name, settings.name);
    if (name[0] == '\0') get_devName(settings.mac, name, sizeof name);
}

int set_apDevices_config(const DeviceSettings *settings) {
    if (settings == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    for (const Step &step : STEPS) {
        LOG("operationType:%d %s:%d", settings->operationType, step.flag_name, *step.flag);
        if (settings->operationType != OPERATION_SETTINGS || *step.flag == 0 || !step.is_asked(*settings))
            continue;
        step.apply(*settings);
        *step.flag = 0;
    }
    return apply_parental_control(*settings);
}
