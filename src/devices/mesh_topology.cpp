// SPDX-License-Identifier: Apache-2.0
#include "devices/mesh_topology.h"

#include <mutex>
#include <string>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "devices/device_document.h"
#include "devices/station.h"
#include "properties/property.h"

namespace {

constexpr char OBJECT[] = "vrop.mesh";

std::mutex topology_lock;
char last_sent[10240];

// Moves the devices of these stations into a node; an empty list where there are none.
void add_devices(json_object *node, json_object *stations) {
    JsonRoot devices(stations ? get_meshApDevice_config(stations) : nullptr);
    if (!devices) devices.reset(json_object_new_array());
    if (JsonSetObj(node, nullptr, "apDevices", devices.get()) == 1) (void)devices.release();
}

const char *link_of(json_object *node) {
    const std::string link = _json_get_str(node, "link");
    return link == "2.4G" ? "2.4G" : link == "5G" ? "5G" : "wired";
}

json_object *node_object(json_object *node) {
    json_object *described = json_object_new_object();
    for (const char *key : {"mac", "name", "ip"})
        JsonSetStr(described, nullptr, key, _json_get_str(node, key));
    JsonSetInt64(described, nullptr, "role", _json_get_int(node, "role"));
    JsonSetStr(described, nullptr, "parent", _json_get_str(node, "parent"));
    JsonSetStr(described, nullptr, "link", link_of(node));
    JsonSetInt64(described, nullptr, "rssi", _json_get_int(node, "rssi"));
    json_object *stations = nullptr;
    JsonGetObj(node, "stations", &stations);
    add_devices(described, json_object_is_type(stations, json_type_array) ? stations : nullptr);
    return described;
}

// The router as the only node, with every station that it lists.
json_object *lone_router(int role) {
    JsonRoot device_root;
    JsonRoot home_root;
    JsonRoot station_root;
    json_object *device = get_dev_info("vrop.devinfo", "get", &device_root);
    json_object *home = get_dev_info("vrop.homewebinfo", "get", &home_root);
    json_object *described = json_object_new_object();
    JsonSetStr(described, nullptr, "mac", _json_get_str(device, "mac"));
    JsonSetStr(described, nullptr, "name", _json_get_str(device, "model"));
    JsonSetStr(described, nullptr, "ip", _json_get_str(home, "ipaddr"));
    JsonSetInt64(described, nullptr, "role", role);
    JsonSetStr(described, nullptr, "parent", "");
    JsonSetStr(described, nullptr, "link", "wired");
    JsonSetInt64(described, nullptr, "rssi", 0);
    add_devices(described, get_station_array(&station_root));
    return described;
}

// The nodes that the daemon tells of, the one without a parent, this router, first.
void add_nodes(json_object *list, json_object *topology) {
    for (const bool first : {true, false})
        for (size_t i = 0; i < json_object_array_length(topology); i++) {
            json_object *node = json_object_array_get_idx(topology, i);
            const bool is_router = _json_get_str(node, "parent")[0] == '\0';
            if (is_router == first && json_object_is_type(node, json_type_object))
                json_object_array_add(list, node_object(node));
        }
}

int fill_topology(json_object *document) {
    JsonRoot root;
    json_object *mesh = get_dev_info(OBJECT, "get", &root);
    if (mesh == nullptr) LOG("get mesh info fail");
    const bool enabled = _json_get_int(mesh, "enable") != 0;
    const int role = _json_get_int(mesh, "current_role");
    JsonSetBool(document, "meshTopology", "enable", enabled);
    JsonSetInt64(document, "meshTopology", "role", role);

    json_object *nodes = json_object_new_array();
    JsonRoot topology_root;
    json_object *topology = enabled ? get_dev_info(OBJECT, "topology", &topology_root) : nullptr;
    if (json_object_is_type(topology, json_type_array)) add_nodes(nodes, topology);
    if (json_object_array_length(nodes) == 0) json_object_array_add(nodes, lone_router(role));
    JsonSetObj(document, "meshTopology", "nodes", nodes);
    return 0;
}

const Property PROPERTY = {
    .name = "meshTopology",
    .start = "meshTopology ",
    .lock = &topology_lock,
    .fill = fill_topology,
    .create_failed = "create json obj fail",
    .changed = "meshTopology have change buf:",
    .report_size = sizeof(last_sent),
    .last_sent = last_sent,
    .last_sent_size = sizeof(last_sent),
};

} // namespace

int meshTopology_init() {
    return property_init(PROPERTY, nullptr);
}

int meshTopology_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int meshTopology_report() {
    return property_report(PROPERTY);
}
