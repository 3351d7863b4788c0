// SPDX-License-Identifier: Apache-2.0
#include "properties/network_info.h"

#include <cstdio>
#include <mutex>

#include "core/json_path.h"
#include "core/log.h"
#include "properties/network_fields.h"
#include "properties/network_wan.h"
#include "properties/property.h"
#include "properties/restart.h"

namespace {

NetworkRecord network_record;
std::mutex network_lock;
char last_sent[10240];

constexpr char CONNECT[] = "networkInfo.networkConnect";
constexpr char ROUTE[] = "networkInfo.networkConnect.route";
constexpr char ROUTE_LIST[] = "networkInfo.networkConnect.route.routeList";
constexpr char RELAY[] = "networkInfo.networkConnect.relay";

Fields route_fields(int32_t route_type) {
    switch (route_type) {
    case ROUTE_PPPOE:
        return PPPOE_FIELDS;
    case ROUTE_DHCP:
        return DHCP_FIELDS;
    default:
        return STATIC_FIELDS;
    }
}

int fill_network_info(json_object *document) {
    const NetworkRecord &network = network_record;
    get_network_config(&network_record);
    JsonSetInt64(document, "networkInfo", "networkMode", network.network_mode);
    switch (network.network_mode) {
    case MODE_BRIDGE:
        JsonCreatePath(document, "networkInfo.networkConnect.bridge");
        return 0;
    case MODE_ROUTE:
        JsonSetInt64(document, ROUTE, "routeType", network.route_type);
        return write_document(route_fields(network.route_type), &network, document, ROUTE_LIST);
    case MODE_RELAY:
        return write_document(RELAY_FIELDS, &network, document, RELAY);
    default:
        JsonSetInt64(document, CONNECT, "meshMode", network.mesh_mode);
        return 0;
    }
}

const Property PROPERTY = {
    .name = "networkInfo",
    .start = "networkInfo ",
    .lock = &network_lock,
    .fill = fill_network_info,
    .member_missing = nullptr,
    .changed = "networkInfo have change buf:",
    .report_size = sizeof(last_sent),
    .last_sent = last_sent,
    .last_sent_size = sizeof(last_sent),
};

// A member object of the request, or null after having said which is missing.
json_object *member_object(json_object *parent, const char *key) {
    json_object *member = nullptr;
    if (JsonGetObj(parent, key, &member) != 0 && json_object_is_type(member, json_type_object)) return member;
    perror("JsonGetObj");
    return nullptr;
}

#define REQUIRE(value, text)                                                                                 \
    do {                                                                                                     \
        if ((value) == -1) {                                                                                 \
            LOG(text);                                                                                       \
            return -1;                                                                                       \
        }                                                                                                    \
    } while (0)

int apply_route(json_object *connect, NetworkRecord *network) {
    json_object *route = member_object(connect, "route");
    if (route == nullptr) return -1;
    network->route_type = request_integer(route, "routeType");
    REQUIRE(network->route_type, "routeType is not exist");
    json_object *list = member_object(route, "routeList");
    if (list == nullptr) return -1;
    switch (network->route_type) {
    case ROUTE_PPPOE:
        read_request(PPPOE_FIELDS, list, network);
        REQUIRE(network->mtu, "mtu is not exist");
        REQUIRE(network->ppoe_dns_enable, "ppoe dnsEnable is not exist");
        ppoe_set(*network);
        return 0;
    case ROUTE_DHCP:
        read_request(DHCP_FIELDS, list, network);
        REQUIRE(network->dhcp_dns_enable, "dhcp dnsEnable is not exist");
        dhcp_set(*network);
        return 0;
    case ROUTE_STATIC:
        read_request(STATIC_FIELDS, list, network);
        static_set(*network);
        return 0;
    default:
        return 0;
    }
}

int apply_relay(json_object *connect, NetworkRecord *network) {
    json_object *relay = member_object(connect, "relay");
    if (relay == nullptr) return -1;
    read_request(RELAY_FIELDS, relay, network);
    REQUIRE(network->relay_radio, "relaySignal is not exist");
    REQUIRE(network->sync, "relaySignal is not exist");
    REQUIRE(network->relay_encryption, "manualEncrytion is not exist");
    relay_set(*network);
    return 0;
}

int apply_connect(json_object *connect, NetworkRecord *network) {
    switch (network->network_mode) {
    case MODE_BRIDGE:
        bridge_set();
        return 0;
    case MODE_ROUTE:
        return apply_route(connect, network);
    default:
        return apply_relay(connect, network);
    }
}

// Once a writer has been called the request counts as served: what the daemon refuses is logged by the
// writer.
int apply_network_info(json_object *member, const char *context) {
    NetworkRecord request{};
    request.network_mode = request_integer(member, "networkMode");
    REQUIRE(request.network_mode, "networkMode is not exist");
    const int32_t mesh_mode = request_integer(member, "meshMode");
    if (mesh_mode != -1) network_record.mesh_mode = mesh_mode;
    request.mesh_mode = network_record.mesh_mode;
    LOG("networkMode:%d", request.network_mode);
    json_object *connect = member_object(member, "networkConnect");
    if (connect == nullptr) return -1;
    announce_restart(context);
    if (apply_connect(connect, &request) != 0) {
        LOG("Json Get Obj fail");
        return -1;
    }
    network_record = request;
    return 0;
}

} // namespace

int networkInfo_init() {
    return property_init(PROPERTY, nullptr);
}

int networkInfo_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(PROPERTY, {context, value, reply, reply_length}, apply_network_info);
}

int networkInfo_get(const char *context, char *output, int length) {
    return property_get(PROPERTY, context, output, length);
}

int networkInfo_report() {
    return property_report(PROPERTY);
}
