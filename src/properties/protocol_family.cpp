// SPDX-License-Identifier: Apache-2.0
#include "properties/protocol_family.h"

#include <cstring>
#include <mutex>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/field.h"
#include "properties/property.h"

namespace {

constexpr char OBJECT[] = "vrop.waninfo";
constexpr char IPV4[] = "IPv4";
constexpr char IPV6[] = "IPv6";
constexpr char BOTH[] = "IPv4/IPv6";

std::mutex ipv6_lock;
std::mutex protocol_lock;

Text<16> read_protocol_type() {
    Text<16> type{};
    JsonRoot root;
    if (json_object *reply = get_dev_info(OBJECT, "get", &root))
        copy_text(type.text, _json_get_str(reply, "protocoltype"));
    return type;
}

int write_protocol_type(const char *type) {
    BusMessage message;
    message.text("protocoltype", type);
    return set_or_log(OBJECT, "set", message, "change networkProtocol fail");
}

int fill_ipv6(json_object *document) {
    JsonSetInt64(document, "ipv6Status", "open", get_ipv6Status());
    return 0;
}

int fill_protocol(json_object *document) {
    JsonSetInt64(document, "networkProtocol", "type", networkprotocol_config_get());
    return 0;
}

// Its lines are the LED switch's, as readers of the log know them.
const Property IPV6_STATUS = {
    .name = "ipv6Status", .start = "ledStatus ", .lock = &ipv6_lock, .fill = fill_ipv6};
const Property NETWORK_PROTOCOL = {.name = "networkProtocol",
                                   .start = "networkProtocol ",
                                   .lock = &protocol_lock,
                                   .fill = fill_protocol,
                                   .request_line = "msg: "};

int apply_ipv6(json_object *member, const char *) {
    const int result = set_ipv6Status(request_integer(member, "open"));
    if (result != 0) LOG("modify ipv6 status fail");
    return result;
}

int apply_protocol(json_object *member, const char *) {
    const int ret = networkprotocol_config_set(request_integer(member, "type"));
    LOG("ret: %d", ret);
    if (ret != 0) LOG("modify ipv6 status fail");
    return ret;
}

} // namespace

int ipv6Status_init() {
    LOG("------------->start enter ipv6Status init<-------------------");
    return 0;
}

int ipv6Status_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(IPV6_STATUS, {context, value, reply, reply_length}, apply_ipv6);
}

int ipv6Status_get(const char *context, char *output, int length) {
    return property_get(IPV6_STATUS, context, output, length);
}

int networkprotocol_init() {
    return property_init(NETWORK_PROTOCOL, nullptr);
}

int networkprotocol_set(const char *context, const char *value, char *reply, int reply_length) {
    return property_set(NETWORK_PROTOCOL, {context, value, reply, reply_length}, apply_protocol);
}

int networkprotocol_get(const char *context, char *output, int length) {
    return property_get(NETWORK_PROTOCOL, context, output, length);
}

int get_ipv6Status() {
    return strstr(read_protocol_type().text, IPV6) != nullptr ? 1 : 0;
}

int set_ipv6Status(int open) {
    if (open != 0 && open != 1) {
        LOG("param is error");
        return -1;
    }
    return write_protocol_type(open == 1 ? BOTH : IPV4);
}

int networkprotocol_config_get() {
    const auto type = read_protocol_type();
    return strcmp(type.text, IPV4) == 0 ? 1 : strcmp(type.text, IPV6) == 0 ? 2 : 0;
}

int networkprotocol_config_set(int type) {
    constexpr const char *TYPES[] = {BOTH, IPV4, IPV6};
    if (type < 0 || type > 2) {
        LOG("input error");
        return -1;
    }
    return write_protocol_type(TYPES[type]);
}
