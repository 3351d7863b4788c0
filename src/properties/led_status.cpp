// SPDX-License-Identifier: Apache-2.0
#include "properties/led_status.h"

#include <mutex>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/property.h"

namespace {

constexpr char OBJECT[] = "vrop.ledswitch";

char led_status[8] = "on";
std::mutex led_lock;
char last_sent[128];

int fill_led_status(json_object *document) {
    JsonRoot root;
    json_object *reply = get_dev_info(OBJECT, "get", &root);
    if (reply == nullptr) {
        LOG("get led status fail");
        return -1;
    }
    if (const char *status = JsonGetStr(reply, "status")) copy_text(led_status, status);
    JsonSetStr(document, nullptr, "ledStatus", led_status);
    return 0;
}

const Property PROPERTY = {
    .name = "ledStatus",
    .start = "ledStatus ",
    .lock = &led_lock,
    .fill = fill_led_status,
    .request_type = json_type_string,
    .member_missing = "APP send data is error",
    .create_failed = "create json obj fail",
    .changed = "timeLed have change buf:", // the LED schedule's text, which readers of the log know
    .report_size = 64,
    .last_sent = last_sent,
    .last_sent_size = sizeof(last_sent),
};

int apply_led_status(json_object *member, const char *) {
    const char *status = json_object_get_string(member);
    if (status == nullptr || *status == '\0') {
        LOG("APP send data is error");
        return -1;
    }
    copy_text(led_status, status);
    BusMessage message;
    message.text("status", led_status);
    return set_dev_info(OBJECT, "set", message);
}

} // namespace

int ledStatus_init() {
    return property_init(PROPERTY, [] { copy_text(led_status, "on"); });
}

int ledStatus_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(PROPERTY, {context, value, reply, reply_length}, apply_led_status);
}

int ledStatus_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int ledStatus_report() {
    return property_report(PROPERTY);
}
