// SPDX-License-Identifier: Apache-2.0
#include "properties/device_status.h"

#include <cstring>
#include <mutex>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/field.h"
#include "properties/property.h"
#include "properties/rate.h"

namespace {

constexpr int32_t LINK_UNPLUGGED = 2;

DeviceStatus device_status;
std::mutex device_status_lock;

constexpr Field FIELDS[] = {
    FIELD(Integer, DeviceStatus, link_status, "linkStatus", nullptr),
    FIELD(Integer, DeviceStatus, network_status, "networkStatus", nullptr),
    FIELD(Integer, DeviceStatus, up_speed, "upSpeed", nullptr),
    FIELD(Integer, DeviceStatus, down_speed, "downSpeed", nullptr),
};

int fill_device_status(json_object *document) {
    get_deviceStatus_config(&device_status);
    return write_document(FIELDS, &device_status, document, "deviceStatus");
}

const Property PROPERTY = {.name = "deviceStatus",
                           .start = "deviceStatus_",
                           .lock = &device_status_lock,
                           .fill = fill_device_status};

void reset() {
    device_status = DeviceStatus{};
}

// A cable that is plugged in again does not clear the state: "unplugged" stays until restart, and the cloud
// counts on it.
void read_link(json_object *reply, DeviceStatus *status) {
    if (strcmp(_json_get_str(reply, "phyStatus"), "unplug") == 0) status->link_status = LINK_UNPLUGGED;
}

void read_rate(json_object *rates, const char *key, int32_t *speed) {
    if (const char *rate = JsonGetStr(rates, key)) *speed = bytes_per_second(rate);
}

} // namespace

int deviceStatus_init() {
    return property_init(PROPERTY, reset);
}

int deviceStatus_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int connectok_hook_deviceStatus() {
    return property_post(PROPERTY);
}

int deviceStatus_report() {
    return property_post(PROPERTY);
}

int get_deviceStatus_config(DeviceStatus *status) {
    if (status == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    JsonRoot root;
    json_object *reply = get_dev_info("vrop.homewebinfo", "get", &root);
    if (reply == nullptr) return -1;
    read_link(reply, status);
    status->network_status = 0;
    get_device_speed(&status->up_speed, &status->down_speed);
    return 0;
}

int get_device_speed(int32_t *up_speed, int32_t *down_speed) {
    if (up_speed == nullptr || down_speed == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    JsonRoot root;
    json_object *rates = get_dev_specInfo("vrop.waninfo", "getwanrate", "vrop.waninfo.wanrate", &root);
    if (rates == nullptr) return -1;
    read_rate(rates, "rxrate_rt", down_speed);
    read_rate(rates, "txrate_rt", up_speed);
    return 0;
}
