// SPDX-License-Identifier: Apache-2.0
#include "devices/ap_devices.h"

#include <mutex>
#include <string>

#include "core/handles.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/report_gate.h"
#include "core/text.h"
#include "devices/device_document.h"
#include "devices/device_settings.h"
#include "properties/property.h"
#include "tebra_sdk.h"

namespace {

constexpr char NAME[] = "apDevices";
constexpr char EVENT[] = "allDevicesReport";
constexpr size_t REPORT_SIZE = 16384;

std::mutex slot_lock; // of the texts below; apdevice_mutex is the devices'
char last_sent[REPORT_SIZE];

int fill(json_object *document, int mode) {
    JsonRoot built(get_apDevice_config(mode));
    json_object *devices = nullptr;
    if (JsonGetObj(built.get(), NAME, &devices) == 0) return -1;
    return json_object_object_add(document, NAME, json_object_get(devices));
}

int fill_property(json_object *document) {
    return fill(document, DOCUMENT_PROPERTY);
}

int fill_report(json_object *document) {
    return fill(document, DOCUMENT_REPORT);
}

const Property PROPERTY = {
    .name = NAME,
    .start = "apDevices ",
    .lock = &slot_lock,
    .fill = fill_property,
    .create_failed = "create json obj fail",
};

const Property REPORT = {
    .name = NAME,
    .start = "apDevices ",
    .lock = &slot_lock,
    .fill = fill_report,
    .changed = "apDevices have change buf:",
    .report_size = REPORT_SIZE,
    .last_sent = last_sent,
    .last_sent_size = sizeof last_sent,
};

} // namespace

int apDevices_init() {
    return property_init(PROPERTY, clear_device_settings);
}

int apDevices_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int apDevices_report() {
    return set_flag == 0 ? property_report(REPORT) : 0;
}

int apDevices_event_report() {
    if (set_flag != 0) {
        LOG("APP is setting, wait again!");
        return 0;
    }
    JsonRoot document(get_apDevice_config(DOCUMENT_EVENT));
    if (!document) {
        LOG("get apdevice json obj fail");
        return -1;
    }
    const char *text = json_object_to_json_string(document.get());
    if (!text) {
        LOG("JsonObj To String fail");
        return -1;
    }
    TEBRA_SDK_PostEvent(EVENT, utf8_text(text).substr(0, REPORT_SIZE - 1).c_str());
    return 0;
}
