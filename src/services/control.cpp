// SPDX-License-Identifier: Apache-2.0
#include "services/control.h"

#include "core/bus.h"
#include "core/command.h"
#include "core/json_path.h"
#include "core/text.h"
#include "properties/field.h"
#include "services/account.h"
#include "services/service.h"

namespace {

constexpr char DEVICE[] = "vrop";
constexpr char DROP_CACHES[] = "sync && echo 3 > /proc/sys/vm/drop_caches";

// Answered whether or not the daemon takes it, so that the cloud has its answer before the router goes down.
ServiceAnswer reboot(const ServiceRequest &request) {
    if (set_dev_info(DEVICE, "reboot") != 0) LOG_AT(request.site, "reboot fail");
    return answer_done();
}

ServiceAnswer answer_action(const ServiceRequest &request, int result, const char *failure) {
    if (result == 0) return answer_done();
    LOG_AT(request.site, "%s", failure);
    return answer_failed();
}

// A level that is there and no number is refused: a reset forgets too much to be made by mistake.
ServiceAnswer recovery(const ServiceRequest &request) {
    if (request.json == nullptr)
        return answer_action(request, set_dev_info(DEVICE, "reset"), "recovery fail");
    int32_t level = 0;
    if (JsonGetObj(request.json, "resetType", nullptr) && !JsonReadInt(request.json, "resetType", &level))
        return answer_action(request, -1, "resetType is error");
    LOG_AT(request.site, "reset_type:%d", level);
    BusMessage message;
    message.integer("resetlevel", level);
    return answer_action(request, set_dev_info(DEVICE, "reset", message), "cutusb fail");
}

ServiceAnswer update_password(const ServiceRequest &request) {
    char texts[3][64];
    constexpr const char *KEYS[] = {"user", "oldPwd", "newPwd"};
    for (int i = 0; i < 3; i++) {
        const char *text = request_text(request.json, KEYS[i]);
        if (text == nullptr) return answer_action(request, -1, "get login info fail");
        copy_text(texts[i], text);
    }
    const int result = set_passwd(texts[0], texts[1], texts[2]);
    if (result == 0) return answer_done();
    LOG_AT(request.site, "set new passwd fail");
    return answer_failed("{}", result, SERVICE_WRONG_PASSWORD);
}

ServiceAnswer drop_caches(const ServiceRequest &request) {
    return answer_action(request, rvxa_run_cmd_ext(DROP_CACHES), "tuningMemory fail");
}

// A path that is there and no text is refused rather than left out: without one the daemon chooses the disk.
ServiceAnswer cut_usb(const ServiceRequest &request) {
    BusMessage message;
    if (request.json != nullptr) {
        LOG_AT(request.site, "msg:%s", request.text);
        const char *given = request_text(request.json, "diskPath");
        if (given == nullptr && JsonGetObj(request.json, "diskPath", nullptr))
            return answer_action(request, -1, "diskPath is error");
        char path[128];
        copy_text(path, given);
        LOG_AT(request.site, "diskPath:%s", path);
        if (given != nullptr) message.text("hcdnpath", path);
    }
    message.integer("cutusb", 1);
    return answer_action(request, set_dev_info("vrop.ecm", "set", message), "cutusb fail");
}

} // namespace

int reboot_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "reboot", .entry = "reboot_call ...\n"};
    return serve(SERVICE, {handle, id, parameters}, reboot);
}

int recovery_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {
        .name = "recovery", .entry = "recovery_call ...\n", .parameters = Parameters::optional};
    return serve(SERVICE, {handle, id, parameters}, recovery);
}

int updatePwd_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {
        .name = "updatePwd", .entry = "updatePwd_call ...\n", .parameters = Parameters::needed};
    return serve(SERVICE, {handle, id, parameters}, update_password);
}

int tuningMemory_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve({.name = "tuningMemory"}, {handle, id, parameters}, drop_caches);
}

int cutUsb_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {
        .name = "cutUsb", .entry = "cutUsb_call ...\n", .parameters = Parameters::optional};
    return serve(SERVICE, {handle, id, parameters}, cut_usb);
}
