// SPDX-License-Identifier: Apache-2.0
#include <string>

#include "core/bus.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/network_wan.h"
#include "services/backup_fields.h"
#include "services/restore.h"
#include "services/restore_sections.h"

namespace {

using namespace backup;

constexpr char WAN[] = "vrop.waninfo";

void add_text(const char *name, const std::string &text, BusMessage *message) {
    if (!text.empty()) message->text(name, text.c_str());
}

// The servers that are given, with commas between them.
Text<48> joined_dns(const BackupInternet &internet) {
    Text<48> servers = {};
    for (const char(&dns)[16] : internet.dns)
        if (*dns != '\0')
            servers = format_text<48>("%s%s%s", servers.text, *servers.text != '\0' ? "," : "", dns);
    return servers;
}

void add_dns(const BackupInternet &internet, BusMessage *message) {
    write_given_message(Fields(DNS4).first(1), &internet, message);
    add_text("dns", joined_dns(internet).text, message);
}

void add_address4(const BackupInternet &internet, BusMessage *message) {
    message->text("networktype", "STATIC");
    write_given_message(ADDRESS4, &internet, message);
    add_dns(internet, message);
}

void add_address6(const BackupInternet &internet, BusMessage *message) {
    message->text("ipv6type", SOURCES6[BACKUP_SOURCE_STATIC]);
    for (Fields rows : {Fields(ADDRESS6), Fields(DNS6_SOURCE), Fields(DNS6), Fields(PREFIX_SOURCE)})
        write_given_message(rows, &internet, message);
    const bool delegated = *internet.prefix_delegation != '\0';
    write_given_message(delegated ? PREFIX_DELEGATION : PREFIX, &internet, message);
}

int restore_relay(const BackupInternet &internet) {
    backup_relay_radio = internet.radio_type;
    const char *object = radio_client(internet.radio_type);
    if (object == nullptr) return -1;
    BusMessage message;
    message.integer("enable", 1);
    write_given_message(RELAY, &internet, &message);
    return set_or_log(object, "set", message, "set relay way fail");
}

int restore_dhcp(const BackupInternet &internet) {
    BusMessage message;
    message.text("networktype", "DHCP");
    if (internet.ip_mode != BACKUP_IPV6) add_dns(internet, &message);
    if (internet.ip_mode != BACKUP_IPV4) write_given_message(DNS6_SOURCE, &internet, &message);
    if (internet.ip_mode == BACKUP_IPV6) add_text("dns", internet.dns6, &message);
    return set_or_log(WAN, "set", message, "set dhcp way fail");
}

int restore_static(const BackupInternet &internet) {
    BusMessage message;
    if (internet.ip_mode != BACKUP_IPV6) add_address4(internet, &message);
    if (internet.ip_mode != BACKUP_IPV4) add_address6(internet, &message);
    if (internet.ip_mode == BACKUP_IP_BOTH) write_given_message(PREFIX_LENGTH, &internet, &message);
    return set_or_log(WAN, "set", message,
                      internet.ip_mode == BACKUP_IPV4 ? "set ipv4 static way fail"
                                                      : "set ipv6 static way fail");
}

int restore_pppoe(const BackupInternet &internet) {
    BusMessage message;
    message.text("networktype", "PPPoE");
    write_given_message(PPPOE, &internet, &message);
    if (internet.dns_enable != -1) message.integer("pppoestaticdns", internet.dns_enable);
    add_dns(internet, &message);
    return set_or_log(WAN, "set", message, "set ppoe way fail");
}

int restore_router(const BackupInternet &internet) {
    if (internet.sub_mode == BACKUP_PPPOE) return restore_pppoe(internet);
    if (internet.sub_mode != BACKUP_DHCP && internet.sub_mode != BACKUP_STATIC) {
        LOG("subMode:%d is not right", internet.sub_mode);
        return -1;
    }
    if (internet.ip_mode < BACKUP_IPV4 || internet.ip_mode > BACKUP_IP_BOTH) return -1;
    return internet.sub_mode == BACKUP_DHCP ? restore_dhcp(internet) : restore_static(internet);
}

} // namespace

int restore_internet(const BackupInternet &internet) {
    switch (internet.router_mode) {
    case BACKUP_BRIDGE:
        return bridge_set();
    case BACKUP_ROUTER:
        return restore_router(internet);
    case BACKUP_RELAY:
        return restore_relay(internet);
    default:
        LOG("route mode:%d is not right", internet.router_mode);
        return -1;
    }
}
