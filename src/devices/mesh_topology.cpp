// SPDX-License-Identifier: Apache-2.0
#include "devices/mesh_topology.h"

#include <mutex>
#include <string>
#include <utility>

#include "core/json_path.h"
#include "core/log.h"
#include "devices/device_document.h"
#include "properties/property.h"

namespace {

constexpr char OBJECT[] = "vrop.mesh";

std::mutex topology_lock;
char last_sent[10240];

// Adds the devices of these stations to a node; an empty list where there are none.
void add_devices(json_object *node, json_object *stations, const BusReplies &replies) {
    const bool listed = json_object_is_type(stations, json_type_array);
    JsonSetObj(node, nullptr, "apDevices",
               listed ? get_meshApDevice_config(stations, replies) : JsonRoot(json_object_new_array()));
}

const char *link_of(json_object *node) {
    const std::string link = _json_get_str(node, "link");
    return link == "2.4G" ? "2.4G" : link == "5G" ? "5G" : "wired";
}

JsonRoot node_object(json_object *node, const BusReplies &replies) {
    JsonRoot described(json_object_new_object());
    for (const char *key : {"mac", "name", "ip"})
        JsonSetStr(described.get(), nullptr, key, _json_get_str(node, key));
    JsonSetInt64(described.get(), nullptr, "role", _json_get_int(node, "role"));
    JsonSetStr(described.get(), nullptr, "parent", _json_get_str(node, "parent"));
    JsonSetStr(described.get(), nullptr, "link", link_of(node));
    JsonSetInt64(described.get(), nullptr, "rssi", _json_get_int(node, "rssi"));
    json_object *stations = nullptr;
    JsonGetObj(node, "stations", &stations);
    add_devices(described.get(), stations, replies);
    return described;
}

// The router as the only node, with every station that it lists. Of its addresses the daemon tells the one
// towards the Internet.
JsonRoot lone_router(int role, const BusReplies &replies) {
    json_object *device = replies.whole("vrop.devinfo", "get");
    json_object *home = replies.whole("vrop.homewebinfo", "get");
    JsonRoot described(json_object_new_object());
    JsonSetStr(described.get(), nullptr, "mac", _json_get_str(device, "mac"));
    JsonSetStr(described.get(), nullptr, "name", _json_get_str(device, "model"));
    JsonSetStr(described.get(), nullptr, "ip", _json_get_str(home, "ipaddr"));
    JsonSetInt64(described.get(), nullptr, "role", role);
    JsonSetStr(described.get(), nullptr, "parent", "");
    JsonSetStr(described.get(), nullptr, "link", "wired");
    JsonSetInt64(described.get(), nullptr, "rssi", 0);
    add_devices(described.get(), replies.whole("vrop.laninfo", "list"), replies);
    return described;
}

// The nodes that the daemon tells of, the one without a parent, this router, first.
void add_nodes(json_object *list, json_object *topology, const BusReplies &replies) {
    for (const bool first : {true, false})
        for (size_t i = 0; i < json_object_array_length(topology); i++) {
            json_object *node = json_object_array_get_idx(topology, i);
            const bool is_router = _json_get_str(node, "parent")[0] == '\0';
            if (is_router == first && json_object_is_type(node, json_type_object))
                JsonAppend(list, node_object(node, replies));
        }
}

int fill_topology(json_object *document) {
    const BusReplies replies;
    json_object *mesh = replies.whole(OBJECT, "get");
    if (mesh == nullptr) LOG("get mesh info fail");
    const bool enabled = _json_get_int(mesh, "enable") != 0;
    const int role = _json_get_int(mesh, "current_role");
    JsonSetBool(document, "meshTopology", "enable", enabled);
    JsonSetInt64(document, "meshTopology", "role", role);

    JsonRoot nodes(json_object_new_array());
    if (!nodes) return -1;
    json_object *topology = enabled ? replies.whole(OBJECT, "topology") : nullptr;
    std::lock_guard lock(apdevice_mutex);
    if (json_object_is_type(topology, json_type_array)) add_nodes(nodes.get(), topology, replies);
    if (json_object_array_length(nodes.get()) == 0) JsonAppend(nodes.get(), lone_router(role, replies));
    JsonSetObj(document, "meshTopology", "nodes", std::move(nodes));
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
