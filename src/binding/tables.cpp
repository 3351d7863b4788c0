// SPDX-License-Identifier: Apache-2.0
#include "binding/tables.h"

#include "properties/device_info.h"
#include "properties/device_status.h"
#include "properties/led_status.h"
#include "properties/mesh.h"
#include "properties/network_info.h"
#include "properties/protocol_family.h"
#include "properties/time_led.h"
#include "properties/time_reboot.h"
#include "properties/visitor_wifi.h"
#include "properties/wifi_info.h"
#include "properties/wifi_senior.h"

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
    {"apDevices"},
    {"mesh", mesh_init, mesh_set, mesh_get, nullptr, nullptr, nullptr},
    {"meshTopology"},
    {"timeLed", timeLed_init, timeLed_set, timeLed_get, nullptr, nullptr, nullptr},
    {"hcdn"},
    {"ipv6Status", ipv6Status_init, ipv6Status_set, ipv6Status_get, nullptr, nullptr, nullptr},
    {"networkProtocol", networkprotocol_init, networkprotocol_set, networkprotocol_get, nullptr, nullptr, nullptr},
    {"wifi2gSeniorInfo", wifi2g_senior_config_init, wifi2g_senior_config_set, wifi2g_senior_config_get,
     nullptr, nullptr, nullptr},
    {"wifi5gSeniorInfo", wifi5g_senior_config_init, wifi5g_senior_config_set, wifi5g_senior_config_get,
     nullptr, nullptr, nullptr},
    {},
    // clang-format on
};

const struct service_row service_map[30] = {
    // name, reserved, handler
    {"tuningWifi"},
    {"reboot"},
    {"recovery"},
    {"checkSignal"},
    {"checkInterference"},
    {"updatePwd"},
    {"monitorSpeed"},
    {"apMonitorSpeed"},
    {"allApMonitorSpeed"},
    {"tuningBackupCfg"},
    {"cfgReport"},
    {"relayScan"},
    {"maxMonitorSpeed"},
    {"cutUsb"},
    {"diskCheck"},
    {"nat"},
    {"connectCheck"},
    {"uploadLog"},
    {"outdiskFormat"},
    {"channelQuality"},
    {"portLinkSpeed"},
    {"rssiQualityCheck"},
    {"networkCheck"},
    {"physicsInfo"},
    {"pingTest"},
    {"remoteCap"},
    {"remoteCfgExport"},
    {"tuningMemory"},
    {"wirelessInterference"},
    {},
};
