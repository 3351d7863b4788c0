// SPDX-License-Identifier: Apache-2.0
#include "cloud/tables.h"

// A row without operations is there to keep the order; the SDK passes its empty slots over.
const struct property_row property_map[17] = {
    // name, init, set, get, connectok_hook, reserved, report
    {"deviceInfo"},
    {"ledStatus"},
    {"wifiInfo"},
    {"timeReboot"},
    {"networkInfo"},
    {"visitorsWifi"},
    {"deviceStatus"},
    {"apDevices"},
    {"mesh"},
    {"meshTopology"},
    {"timeLed"},
    {"hcdn"},
    {"ipv6Status"},
    {"networkProtocol"},
    {"wifi2gSeniorInfo"},
    {"wifi5gSeniorInfo"},
    {},
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
