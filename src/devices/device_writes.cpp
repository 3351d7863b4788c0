// SPDX-License-Identifier: Apache-2.0
#include "devices/device_writes.h"

#include "core/bus.h"
#include "core/clock.h"
#include "core/log.h"
#include "devices/bus_replies.h"

namespace {

constexpr char STATION[] = "vrop.laninfo.sta";

// Seconds that a disconnection of that code lasts; 0: no end.
int32_t disconnect_seconds(int32_t code) {
    switch (code) {
    case 2:
        return 600;
    case 3:
        return 1800;
    case 4:
        return 3600;
    default:
        return 0;
    }
}

} // namespace

int set_apDevice_name(const char *name, const char *mac) {
    if (is_missing(name != nullptr ? mac : nullptr)) return -1;
    BusMessage message;
    message.text("mac", mac).text("devname", name);
    return set_or_log(STATION, "set", message, "modify name fail");
}

int set_limitSpeed(const SpeedLimit &limit, const char *mac) {
    if (is_missing(mac)) return -1;
    BusMessage message;
    message.integer("limitrateswitch", limit.open);
    if (limit.downSpeed != 0 && limit.downSpeed != -1) message.integer("dsbandwidth", limit.downSpeed);
    if (limit.upSpeed != 0 && limit.upSpeed != -1) message.integer("usbandwidth", limit.upSpeed);
    message.text("mac", mac);
    return set_or_log(STATION, "set", message, "set limit speed fail");
}

int set_disconnectInfo(int32_t disconnect, const char *mac, const char *name) {
    if (is_missing(name != nullptr ? mac : nullptr)) return -1;
    const int32_t since = disconnect != 0 ? static_cast<int32_t>(now_seconds()) : 0;
    BusMessage message;
    message.integer("disconnect", disconnect).integer("disconnecttime", disconnect_seconds(disconnect));
    message.integer("disconnectsettime", since).text("mac", mac).text("hostname", name);
    const int result = set_dev_info("vrop.parent.control", "setdev", message);
    if (result == 0)
        LOG("set disconnnect ok");
    else
        LOG("set disconnect fail");
    return result;
}
