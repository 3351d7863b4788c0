// SPDX-License-Identifier: Apache-2.0
// What the relay does with one datagram.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>

#include "core/handles.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "relay/event_client.h"
#include "relay/relay.h"
#include "tebra_sdk.h"

namespace {

// Texts from elsewhere are quoted as JSON: whoever may send a datagram must not write the event's other
// members.
constexpr size_t ADDRESS = 256;
constexpr int64_t MISSING = -1; // what the integer reader gives for a missing member

RelayActions actions;

int as_int(int64_t value) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<int64_t>(value, Limits::min(), Limits::max()));
}

int integer_of(json_object *event, const char *name) {
    return as_int(JsonGetInt64(event, name));
}

int integer_or(json_object *event, const char *name, int fallback) {
    int64_t value = JsonGetInt64(event, name);
    return value == MISSING ? fallback : as_int(value);
}

int update_set_time(json_object *event) {
    int ota = integer_or(event, "otaCheckInterval", 0);
    int minimum = integer_or(event, "minInterval", 0);
    int maximum = integer_or(event, "maxInterval", 0);
    if (JsonGetInt64(event, "otaCheckInterval") != MISSING && actions.set_check_interval != nullptr)
        actions.set_check_interval(ota);
    LOG("otaCheckInterval:%d, minInterval:%d, maxInterval:%d", ota, minimum, maximum);
    update_checkTime(ota, minimum, maximum);
    return 0;
}

int upgrade_progress(json_object *event) {
    int progress = integer_of(event, "progress");
    LOG("handle receive Upgradeprogress : %d\n", progress);
    TEBRA_SDK_PostUpgress(progress);
    return 0;
}

int device_upgrade(json_object *event) {
    printf("handle receive deviceUpgrade\n");
    const char *mac = JsonGetStr(event, "mac");
    const char *message = JsonGetStr(event, "msg");
    if (mac == nullptr || message == nullptr) return -31;
    auto body = format_text<EVENT_BODY>("{\"mac\":%s, \"msg\":%s, \"result\": %d}", JsonQuote(mac).c_str(),
                                        JsonQuote(message).c_str(), integer_of(event, "result"));
    TEBRA_SDK_PostEvent("deviceUpgrade", body.text);
    return 0;
}

int config_report_progress(json_object *event) {
    const char *mac = JsonGetStr(event, "mac");
    if (mac == nullptr) return -3;
    int result = integer_of(event, "result");
    LOG("handle receive cfgReportProgress : %d\n", result);
    auto body = format_text<EVENT_BODY>("{\"mac\":%s, \"result\": %d}", JsonQuote(mac).c_str(), result);
    TEBRA_SDK_PostEvent("cfgReportProgress", body.text);
    return 0;
}

int device_connect(json_object *event) {
    const char *mac = JsonGetStr(event, "mac");
    if (mac == nullptr) {
        LOG("get mac fail");
        return -4;
    }
    const char *name = JsonGetStr(event, "devName");
    if (name == nullptr) {
        LOG("get device name fail");
        return -5;
    }
    LOG("mac:%s", mac);
    const auto body_with = [&](const std::string &quoted_name) {
        return format_text<EVENT_BODY>("{\"mac\":%s, \"name\": %s, \"time\": %ld}", JsonQuote(mac).c_str(),
                                       quoted_name.c_str(), static_cast<long>(JsonGetInt64(event, "time")));
    };
    const size_t room = EVENT_BODY - 1 - strlen(body_with("").text);
    const auto body = body_with(JsonQuote(name, room));
    printf("TEBRA_SDK_PostEvent[deviceConnet]: %s\n", body.text);
    TEBRA_SDK_PostEvent("deviceConnet", body.text); // the cloud expects it spelled so
    return 0;
}

int all_devices_report(json_object *) {
    if (actions.all_devices_report != nullptr) actions.all_devices_report();
    return 0;
}

int network_restart_time(json_object *event) {
    char mac[64];
    char interface_name[128];
    copy_text(mac, JsonGetStr(event, "mac"));
    copy_text(interface_name, JsonGetStr(event, "interfaceName"));
    auto body = format_text<EVENT_BODY>("{\"mac\":%s, \"interfaceName\":%s, \"networkDelay\": %d}",
                                        JsonQuote(mac).c_str(), JsonQuote(interface_name).c_str(),
                                        integer_or(event, "networkDelay", 0));
    TEBRA_SDK_PostEvent("networkRestartTime", body.text);
    return 0;
}

int out_format_feedback(json_object *event) {
    auto body = format_text<EVENT_BODY>("{\"result\": %d}", integer_or(event, "result", 1));
    TEBRA_SDK_PostEvent("outFormatFeedback", body.text);
    return 0;
}

int remote_capture_success(json_object *) {
    if (actions.capture_address == nullptr) return 0;
    char address[ADDRESS] = {};
    actions.capture_address(address, sizeof address);
    LOG("realurl: %s", address);
    auto body = format_text<EVENT_BODY>("{\"result\": %s}", JsonQuote(address).c_str());
    TEBRA_SDK_PostEvent("RemoteCapSuccess", body.text);
    return 0;
}

struct Action {
    const char *name;
    bool needs_cloud;
    int (*handle)(json_object *event);
};

const Action ACTIONS[] = {
    {"updatesettime", false, update_set_time},
    {"upgradeProgress", true, upgrade_progress},
    {"deviceUpgrade", true, device_upgrade},
    {"cfgReportProgress", true, config_report_progress},
    {"deviceConnect", true, device_connect},
    {"allDevicesReport", true, all_devices_report},
    {"networkRestartTime", true, network_restart_time},
    {"outFormatFeedback", true, out_format_feedback},
    {"RemoteCapSuccess", true, remote_capture_success},
};

int dispatch(const char *name, json_object *event) {
    const Action *action = std::find_if(std::begin(ACTIONS), std::end(ACTIONS),
                                        [&](const Action &a) { return strcmp(a.name, name) == 0; });
    bool known = action != std::end(ACTIONS);
    if ((!known || action->needs_cloud) && get_connect_state() != 1) {
        LOG("event need report ,but device is offline! so it will not upload data!");
        return 0;
    }
    return known ? action->handle(event) : 0;
}

} // namespace

void set_relay_actions(const RelayActions &new_actions) {
    actions = new_actions;
}

int handle_qvtk_event(const char *text, int length) {
    char message[EVENT_MAX + 1] = {};
    if (text != nullptr && length > 0)
        memcpy(message, text, std::min(static_cast<size_t>(length), EVENT_MAX));
    LOG("msg:%s", message);
    JsonRoot event(json_tokener_parse(message));
    if (!event) {
        perror("JsonStrToken");
        LOG("parse JSON fail");
        return -1;
    }
    const char *name = JsonGetStr(event.get(), "action");
    if (name == nullptr) {
        LOG("msg has no action");
        return -2;
    }
    return dispatch(name, event.get());
}
