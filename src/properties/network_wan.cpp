// SPDX-License-Identifier: Apache-2.0
#include "properties/network_wan.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/network_fields.h"
#include "properties/radio.h"

namespace {

constexpr char WAN[] = "vrop.waninfo";

// "first,second", or one server alone; the daemon may give none. Blanks around the second do not belong to
// it.
void split_dns(json_object *reply, char (&dns1)[16], char (&dns2)[16]) {
    constexpr char BLANKS[] = " \t\r\n\v\f";
    const char *text = JsonGetStr(reply, "dns");
    const size_t first = text == nullptr ? 0 : strcspn(text, ",");
    if (first == 0) return;
    copy_text(dns1, std::string(text, first).c_str());
    std::string second = cut_dns(text) == 1 ? text + first + 1 : "";
    second.erase(0, second.find_first_not_of(BLANKS));
    copy_text(dns2, second.substr(0, second.find_first_of(BLANKS)).c_str());
}

void add_dns(BusMessage *message, const char *dns1, const char *dns2) {
    message->text("dns", format_text<32>("%s,%s", dns1, dns2).text);
}

void read_route(json_object *reply, NetworkRecord *network) {
    const char *type = _json_get_str(reply, "networktype");
    if (strcmp(type, "DHCP") == 0) {
        network->route_type = ROUTE_DHCP;
        read_daemon(DHCP_FIELDS, reply, network);
        split_dns(reply, network->dhcp_dns1, network->dhcp_dns2);
    } else if (strcmp(type, "PPPoE") == 0) {
        network->route_type = ROUTE_PPPOE;
        read_daemon(PPPOE_FIELDS, reply, network);
        split_dns(reply, network->ppoe_dns1, network->ppoe_dns2);
    } else if (strcmp(type, "STATIC") == 0) {
        network->route_type = ROUTE_STATIC;
        read_daemon(STATIC_FIELDS, reply, network);
        split_dns(reply, network->static_dns1, network->static_dns2);
    } else {
        LOG("param is unmatched");
    }
}

int read_relay(json_object *reply, NetworkRecord *network) {
    LOG("enter APCLIENT");
    network->relay_radio = strcmp(_json_get_str(reply, "radio"), "5G") == 0 ? RADIO_5G : RADIO_2G;
    LOG("relay_radio:%d", network->relay_radio);
    JsonRoot root;
    json_object *client = get_dev_info(radio_client(network->relay_radio), "get", &root);
    if (client == nullptr) {
        LOG("get relay obj fail");
        return -1;
    }
    network->sync = 0; // also when the daemon does not say
    read_daemon(RELAY_FIELDS, client, network);
    LOG("sync:%d", network->sync);
    return 0;
}

} // namespace

int get_network_config(NetworkRecord *network) {
    if (network == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    JsonRoot root;
    json_object *reply = get_dev_info(WAN, "get", &root);
    if (reply == nullptr) return -1;
    const char *workmode = _json_get_str(reply, "workmode");
    if (strcmp(workmode, "BRIDGE") == 0) {
        network->network_mode = MODE_BRIDGE;
    } else if (strcmp(workmode, "ROUTE") == 0) {
        network->network_mode = MODE_ROUTE;
        read_route(reply, network);
    } else if (strcmp(workmode, "APCLIENT") == 0) {
        network->network_mode = MODE_RELAY;
        return read_relay(reply, network);
    } else if (strcmp(workmode, "MESH") == 0) {
        network->network_mode = MODE_MESH;
    } else {
        LOG("param is unmatched");
    }
    return 0;
}

int bridge_set() {
    BusMessage message;
    message.text("networktype", "BRIDGE");
    return set_or_log(WAN, "set", message, "set bridge way fail");
}

int dhcp_set(const NetworkRecord &network) {
    BusMessage message;
    message.integer("dnsenable", network.dhcp_dns_enable);
    if (network.dhcp_dns_enable != 0) add_dns(&message, network.dhcp_dns1, network.dhcp_dns2);
    message.text("networktype", "DHCP");
    return set_or_log(WAN, "set", message, "set dhcp way fail");
}

int ppoe_set(const NetworkRecord &network) {
    BusMessage message;
    message.text("networktype", "PPPoE");
    write_message(PPPOE_LOGIN, &network, &message);
    message.integer("pppoestaticdns", network.ppoe_dns_enable).integer("dnsenable", network.ppoe_dns_enable);
    if (network.ppoe_dns_enable != 0) add_dns(&message, network.ppoe_dns1, network.ppoe_dns2);
    return set_or_log(WAN, "set", message, "set ppoe way fail");
}

int static_set(const NetworkRecord &network) {
    BusMessage message;
    message.text("networktype", "STATIC")
        .text("gateway", network.static_gateway)
        .text("ipaddr", network.static_ip)
        .text("subnetmask", network.static_mask);
    add_dns(&message, network.static_dns1, network.static_dns2);
    return set_or_log(WAN, "set", message, "set dhcp way fail"); // one text for both ways with addresses
}

int relay_set(const NetworkRecord &network) {
    char authmode[32];
    get_set_encrytion(network.relay_encryption, authmode, sizeof(authmode));
    BusMessage message;
    message.integer("enable", 1);
    write_message(RELAY_LOGIN, &network, &message);
    message.integer("keepwifiupflag", network.sync).text("authmode", authmode);
    return set_or_log(radio_client(network.relay_radio), "set", message, "set relay way fail");
}

int cut_dns(const char *text) {
    if (text == nullptr) {
        printf("param is NULL");
        return -1;
    }
    return strchr(text, ',') != nullptr ? 1 : 0;
}
