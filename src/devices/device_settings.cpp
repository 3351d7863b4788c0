// SPDX-License-Identifier: Apache-2.0
#include "devices/device_settings.h"

#include <cstring>

#include "core/json_path.h"
#include "core/log.h"
#include "core/report_gate.h"
#include "devices/apply_settings.h"
#include "devices/device_lookups.h"
#include "devices/device_request.h"
#include "devices/mac_filter.h"
#include "devices/online_notice.h"
#include "properties/field.h"
#include "properties/property.h"

int black_flag, disconnect_flag, name_flag, limitSpeed_flag, notice_flag;
int parentControl_flag, parent_app_flag;
int parental_waits;

namespace {

DeviceSettings device_settings; // of the element at work; guarded by apdevice_mutex

void compare_states(const DeviceSettings &asked, const BusReplies &present) {
    if (asked.onlineNotice != -1 && asked.onlineNotice != get_device_inform(asked.mac, present))
        notice_flag = 1;
    if (asked.blackEnable != -1) {
        const int black = get_macFilter_enable(asked.mac);
        LOG("black:%d tmp_info.blackEnable:%d", black, asked.blackEnable);
        if (black != asked.blackEnable) black_flag = 1;
    }
    if (asked.disconnect != -1) {
        int code = 0;
        long since = 0;
        get_disconnectInfo(asked.mac, &code, &since, present);
        LOG("disconnect:%d tmp_info.disconnect:%d", code, asked.disconnect);
        if (code != asked.disconnect) disconnect_flag = 1;
    }
}

void compare_name(const DeviceSettings &asked, const BusReplies &present) {
    char name[DEVICE_NAME_SIZE];
    if (get_devName(asked.mac, name, sizeof name, present) != 0 || strcmp(name, asked.name) != 0)
        name_flag = 1;
}

void compare_limit(const DeviceSettings &asked, const BusReplies &present) {
    const SpeedLimit &limit = asked.limit;
    int up = -1, down = -1, open = -1;
    get_limitSpeed(asked.mac, &up, &down, &open, present);
    const bool stays_off = limit.open == 0 && open == 0;
    const bool same_speeds =
        (limit.upSpeed == -1 || limit.upSpeed == up) && (limit.downSpeed == -1 || limit.downSpeed == down);
    limitSpeed_flag = stays_off || (limit.open == open && same_speeds) ? 0 : 1;
    if (limitSpeed_flag == 0) LOG("device is exist in limit list");
}

// The rules that the request selects; the daemon's are deleted before new ones are taken.
void take_parental_parts(json_object *element, int32_t type, DeviceSettings *settings) {
    if ((type == WEB_AND_TIME_PARTS || type == WEB_PART) && read_web_control(element, settings)) {
        LOG("ENTER parentalWebControl");
        clear_parentUrlControl(settings->mac);
        parentControl_flag = 1;
    }
    if ((type == WEB_AND_TIME_PARTS || type == TIME_PART) && read_time_control(element, settings)) {
        clear_parentTimeControl(settings->mac);
        parentControl_flag = 1;
    }
    if (get_apdev_appcontrol_data(element, type, settings)) parent_app_flag = 1;
}

void set_switches(const DeviceSettings &asked) {
    if (asked.parentalEnable == -1 && asked.webControlEnable == -1 && asked.timeControlEnable == -1) return;
    char name[DEVICE_NAME_SIZE];
    supervised_name(asked, name);
    set_parent_enable(asked.mac, name, asked.parentalEnable, asked.timeControlEnable, asked.webControlEnable,
                      true);
}

// False when the element ends the request.
bool apply_element(json_object *element) {
    DeviceSettings &settings = device_settings;
    const int32_t type = request_integer(element, "ParentControlType");
    const bool usable = read_settings(element, &settings);
    LOG("parentalEnable:%d timeControlEnable:%d webControlEnable:%d parentcontrol_type:%d",
        settings.parentalEnable, settings.timeControlEnable, settings.webControlEnable, type);
    if (!usable) {
        LOG("APP send data fail");
        return false;
    }
    if (settings.mac[0] == '\0') {
        LOG("a device without mac is passed over");
        return true;
    }
    const BusReplies present;
    compare_states(settings, present);
    if (settings.has_name) compare_name(settings, present);
    if (settings.has_limit) compare_limit(settings, present);
    take_parental_parts(element, type, &settings);
    set_switches(settings);
    set_apDevices_config(&settings);
    return true;
}

int apply_elements(json_object *elements, const char *) {
    parental_waits = 0;
    const size_t count = json_object_array_length(elements);
    for (size_t i = 0; i < count; i++)
        if (!apply_element(json_object_array_get_idx(elements, i))) return -1;
    return 0;
}

const Property SETTINGS = {
    .name = "apDevices",
    .start = "apDevices ",
    .lock = &apdevice_mutex,
    .request_type = json_type_array,
    .parse_failed = "JsonStr Token fail msg:",
    .parse_failed_shows_request = true,
    .request_line = "msg: ",
};

const char *unless_empty(const char *text) {
    return text != nullptr && text[0] != '\0' ? text : nullptr;
}

} // namespace

int apDevices_set(const char *context, const char *message, char *reply, int reply_length) {
    const ReportsHeld held;
    return property_set(SETTINGS, {unless_empty(context), unless_empty(message), reply, reply_length},
                        apply_elements);
}

void clear_device_settings() {
    std::lock_guard lock(apdevice_mutex);
    device_settings = {};
}
