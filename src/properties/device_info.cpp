// SPDX-License-Identifier: Apache-2.0
#include "properties/device_info.h"

#include <mutex>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/registration.h"
#include "core/text.h"
#include "properties/field.h"
#include "properties/property.h"

namespace {

DeviceInfo device_info;
std::mutex device_info_lock;

constexpr Field FIELDS[] = {
    FIELD(Text, DeviceInfo, product_id, "productId", nullptr),
    FIELD(Text, DeviceInfo, serial_number, "sn", nullptr),
    FIELD(Text, DeviceInfo, model, "deviceModel", "model"),
    FIELD(Text, DeviceInfo, firmware_version, "fwVersion", "iswversion"),
    FIELD(Text, DeviceInfo, external_firmware_version, "outFwVersion", "swversion"),
    FIELD(Text, DeviceInfo, hardware_version, "hdVersion", nullptr),
    FIELD(Text, DeviceInfo, manufacturer, "manufacturer", nullptr),
    FIELD(Text, DeviceInfo, mac, "mac", nullptr),
    FIELD(Text, DeviceInfo, area_code, "areaCode", nullptr),
    FIELD(Text, DeviceInfo, device_identifier, "imei", "vrei"),
    FIELD(Text, DeviceInfo, ip, "ip", nullptr),
};

int fill_device_info(json_object *document) {
    if (device_info.refresh == nullptr) {
        LOG("deviceinfo.getdata is NULL");
        return -1;
    }
    device_info.refresh(&device_info);
    write_document(FIELDS, &device_info, document, "deviceInfo");
    JsonSetInt64(document, "deviceInfo", "onlineTime", device_info.online_time);
    return 0;
}

const Property PROPERTY = {
    .name = "deviceInfo", .start = "deviceInfo_", .lock = &device_info_lock, .fill = fill_device_info};

void reset() {
    device_info = DeviceInfo{};
    device_info.refresh = get_deviceInfo_conf;
}

void read_hardware_version(json_object *reply, DeviceInfo *info) {
    const char *internal = _json_get_str(reply, "ihdversion");
    if (*internal != '\0')
        copy_text(info->hardware_version, internal);
    else if (const char *external = JsonGetStr(reply, "hdversion"))
        copy_text(info->hardware_version, external);
}

// The daemon's "mac" is twelve hex digits; a device without a serial number goes by them.
void read_mac_and_serial_number(json_object *reply, DeviceInfo *info) {
    const char *digits = JsonGetStr(reply, "mac");
    if (digits != nullptr) set_colon_mac(digits, info->mac, sizeof(info->mac));
    const char *serial_number = JsonGetStr(reply, "sn");
    if (serial_number == nullptr) return;
    if (*serial_number != '\0')
        copy_text(info->serial_number, serial_number);
    else if (digits != nullptr)
        copy_text(info->serial_number, mac_lower_hex(digits).text);
    LOG("sn:%s", info->serial_number);
}

} // namespace

int deviceInfo_init() {
    return property_init(PROPERTY, reset);
}

int deviceInfo_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int connectok_hook_deviceInfo() {
    return property_post(PROPERTY);
}

int get_deviceInfo_conf(DeviceInfo *info) {
    if (info == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    copy_text(info->product_id, DEFAULT_PRODUCT_KEY);
    JsonRoot root;
    if (json_object *reply = get_dev_info("vrop.ftinfo", "get", &root)) {
        read_daemon(FIELDS, reply, info);
        read_hardware_version(reply, info);
        const char *vendor = JsonGetStr(reply, "odmvendor");
        copy_text(info->manufacturer, vendor != nullptr ? vendor : DEFAULT_VENDOR);
        json_object *area = nullptr;
        // "areaCode" only says that there is one; its text is under "province"
        const char *province = JsonGetStr(reply, "province");
        if (JsonGetObj(reply, "areaCode", &area) != 0 && province != nullptr)
            copy_text(info->area_code, province);
        read_mac_and_serial_number(reply, info);
    }
    get_deviceIp(info->ip, sizeof(info->ip), &info->online_time);
    return 0;
}

void get_deviceIp(char *ip, int ip_size, uint32_t *online_time) {
    if (ip == nullptr || ip_size < 1 || online_time == nullptr) {
        LOG("get ip fail");
        return;
    }
    JsonRoot root;
    json_object *reply = get_dev_info("vrop.homewebinfo", "get", &root);
    if (reply == nullptr) return;
    if (const char *address = JsonGetStr(reply, "ipaddr"))
        copy_text(ip, static_cast<size_t>(ip_size), address);
    json_object *uptime = nullptr;
    if (JsonGetObj(reply, "uptime", &uptime) != 0)
        *online_time = static_cast<uint32_t>(json_object_get_int64(uptime));
}
