// SPDX-License-Identifier: Apache-2.0
#include "binding/tables.h"

#include "core/log.h"
#include "devices/ap_devices.h"
#include "devices/device_settings.h"
#include "properties/device_info.h"
#include "properties/device_status.h"
#include "properties/hcdn.h"
#include "properties/led_status.h"
#include "properties/mesh.h"
#include "properties/network_info.h"
#include "properties/protocol_family.h"
#include "properties/time_led.h"
#include "properties/time_reboot.h"
#include "properties/visitor_wifi.h"
#include "properties/wifi_info.h"
#include "properties/wifi_senior.h"
#include "services/disks.h"
#include "services/hardware.h"
#include "services/ports.h"
#include "services/service.h"

// A row without operations is there to keep the order; whether the SDK passes its empty slots over is the
// SDK's affair, the one over MQTT does.
const struct property_row property_map[17] = {
    // clang-format off
    // name, init, set, get, connectok_hook, reserved, report
    {"deviceInfo", deviceInfo_init, nullptr, deviceInfo_get, connectok_hook_deviceInfo, nullptr, nullptr},
    {"ledStatus", ledStatus_init, ledStatus_set, ledStatus_get, nullptr, nullptr, ledStatus_report},
    {"wifiInfo", wifiInfo_init, wifiInfo_set, wifiInfo_get, nullptr, nullptr, wifiInfo_report},
    {"timeReboot", timeReboot_init, timeReboot_set, timeReboot_get, nullptr, nullptr, nullptr},
    {"networkInfo", networkInfo_init, networkInfo_set, networkInfo_get, nullptr, nullptr, nullptr},
    {"visitorsWifi", visitorWifi_init, visitorWifi_set, visitorWifi_get, nullptr, nullptr, nullptr},
    {"deviceStatus", deviceStatus_init, nullptr, deviceStatus_get, connectok_hook_deviceStatus, nullptr, nullptr},
    {"apDevices", apDevices_init, apDevices_set, apDevices_get, nullptr, nullptr, nullptr},
    {"mesh", mesh_init, mesh_set, mesh_get, nullptr, nullptr, nullptr},
    {"meshTopology"},
    {"timeLed", timeLed_init, timeLed_set, timeLed_get, nullptr, nullptr, nullptr},
    {"hcdn", hcdn_init, hcdn_set, hcdn_get, nullptr, nullptr, hcdn_report},
    {"ipv6Status", ipv6Status_init, ipv6Status_set, ipv6Status_get, nullptr, nullptr, nullptr},
    {"networkProtocol", networkprotocol_init, networkprotocol_set, networkprotocol_get, nullptr, nullptr, nullptr},
    {"wifi2gSeniorInfo", wifi2g_senior_config_init, wifi2g_senior_config_set, wifi2g_senior_config_get,
     nullptr, nullptr, nullptr},
    {"wifi5gSeniorInfo", wifi5g_senior_config_init, wifi5g_senior_config_set, wifi5g_senior_config_get,
     nullptr, nullptr, nullptr},
    {},
    // clang-format on
};

namespace {

// A service whose work is not there yet says so, rather than leave the SDK a null handler.
template <int row>
int open_row_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    const Service service = {.name = service_map[row].name};
    return serve(service, {handle, id, parameters}, [](const ServiceRequest &request) {
        LOG_AT(request.site, "%s is not there yet", service_map[row].name);
        return answer_failed();
    });
}

} // namespace

const struct service_row service_map[30] = {
    // name, reserved, handler
    {"tuningWifi", nullptr, open_row_call<0>},
    {"reboot", nullptr, open_row_call<1>},
    {"recovery", nullptr, open_row_call<2>},
    {"checkSignal", nullptr, open_row_call<3>},
    {"checkInterference", nullptr, open_row_call<4>},
    {"updatePwd", nullptr, open_row_call<5>},
    {"monitorSpeed", nullptr, open_row_call<6>},
    {"apMonitorSpeed", nullptr, open_row_call<7>},
    {"allApMonitorSpeed", nullptr, open_row_call<8>},
    {"tuningBackupCfg", nullptr, open_row_call<9>},
    {"cfgReport", nullptr, open_row_call<10>},
    {"relayScan", nullptr, open_row_call<11>},
    {"maxMonitorSpeed", nullptr, open_row_call<12>},
    {"cutUsb", nullptr, open_row_call<13>},
    {"diskCheck", nullptr, diskCheck_call},
    {"nat", nullptr, open_row_call<15>},
    {"connectCheck", nullptr, open_row_call<16>},
    {"uploadLog", nullptr, open_row_call<17>},
    {"outdiskFormat", nullptr, open_row_call<18>},
    {"channelQuality", nullptr, open_row_call<19>},
    {"portLinkSpeed", nullptr, portLinkSpeed_call},
    {"rssiQualityCheck", nullptr, open_row_call<21>},
    {"networkCheck", nullptr, open_row_call<22>},
    {"physicsInfo", nullptr, physics_info_call},
    {"pingTest", nullptr, open_row_call<24>},
    {"remoteCap", nullptr, open_row_call<25>},
    {"remoteCfgExport", nullptr, open_row_call<26>},
    {"tuningMemory", nullptr, open_row_call<27>},
    {"wirelessInterference", nullptr, open_row_call<28>},
    {},
};
