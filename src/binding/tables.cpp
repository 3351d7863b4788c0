// SPDX-License-Identifier: Apache-2.0
#include "binding/tables.h"

#include "devices/ap_devices.h"
#include "devices/device_settings.h"
#include "devices/mesh_topology.h"
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
#include "services/backup_services.h"
#include "services/channels.h"
#include "services/config_export.h"
#include "services/control.h"
#include "services/diagnostics.h"
#include "services/disk_format.h"
#include "services/disks.h"
#include "services/hardware.h"
#include "services/log_upload.h"
#include "services/neighbours.h"
#include "services/ports.h"
#include "services/radio_checks.h"
#include "services/remote_capture.h"
#include "services/station_quality.h"
#include "services/throughput.h"

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
    {"meshTopology", meshTopology_init, nullptr, meshTopology_get, nullptr, nullptr, nullptr},
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

const struct service_row service_map[30] = {
    // name, reserved, handler
    {"tuningWifi", nullptr, tuningWifi_call},
    {"reboot", nullptr, reboot_call},
    {"recovery", nullptr, recovery_call},
    {"checkSignal", nullptr, checkSignal_call},
    {"checkInterference", nullptr, wifi_interference_call},
    {"updatePwd", nullptr, updatePwd_call},
    {"monitorSpeed", nullptr, monitorSpeed_call},
    {"apMonitorSpeed", nullptr, apMonitorSpeed_call},
    {"allApMonitorSpeed", nullptr, allApMonitorSpeed_call},
    {"tuningBackupCfg", nullptr, tuningBackupCfg_call},
    {"cfgReport", nullptr, cfgReport_call},
    {"relayScan", nullptr, relayScan_call},
    {"maxMonitorSpeed", nullptr, maxMonitorSpeed_call},
    {"cutUsb", nullptr, cutUsb_call},
    {"diskCheck", nullptr, diskCheck_call},
    {"nat", nullptr, nat_call},
    {"connectCheck", nullptr, connectCheck_call},
    {"uploadLog", nullptr, uploadlog_call},
    {"outdiskFormat", nullptr, outdiskFormat_call},
    {"channelQuality", nullptr, channelQuality_call},
    {"portLinkSpeed", nullptr, portLinkSpeed_call},
    {"rssiQualityCheck", nullptr, rssiQualityCheck_call},
    {"networkCheck", nullptr, networkCheck_call},
    {"physicsInfo", nullptr, physics_info_call},
    {"pingTest", nullptr, ping_test_call},
    {"remoteCap", nullptr, remotecap_call},
    {"remoteCfgExport", nullptr, remoteCfgExport_call},
    {"tuningMemory", nullptr, tuningMemory_call},
    {"wirelessInterference", nullptr, wirelessInterference_call},
    {},
};
