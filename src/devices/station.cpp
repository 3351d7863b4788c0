// SPDX-License-Identifier: Apache-2.0
#include "devices/station.h"

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"

json_object *get_station_array(JsonRoot *root) {
    json_object *stations = get_dev_info("vrop.laninfo", "list", root);
    if (json_object_is_type(stations, json_type_array)) return stations;
    LOG("get laninfo list fail");
    return nullptr;
}

const char *station_name(json_object *station) {
    const char *name = JsonGetStr(station, "devname");
    return name && name[0] != '\0' ? name : JsonGetStr(station, "hostname");
}
