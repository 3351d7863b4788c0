// SPDX-License-Identifier: Apache-2.0
// The reading side of the way to the Internet.
#include <cstring>
#include <string>
#include <utility>

#include "core/bus.h"
#include "core/text.h"
#include "services/backup_fields.h"
#include "services/backup_read.h"
#include "services/backup_section.h"

namespace {

using namespace backup;

// What vrop.waninfo gives, whatever the mode is.
constexpr Fields WAN_ROWS[] = {PPPOE,           ADDRESS4, DNS4,         ADDRESS6_SOURCE,
                               GATEWAY6_SOURCE, ADDRESS6, DNS6_SOURCE,  DNS6,
                               PREFIX_SOURCE,   PREFIX,   PREFIX_LENGTH};

int32_t router_mode(const char *workmode) {
    if (strcmp(workmode, "BRIDGE") == 0) return BACKUP_BRIDGE;
    if (strcmp(workmode, "ROUTE") == 0) return BACKUP_ROUTER;
    return strcmp(workmode, "APCLIENT") == 0 ? BACKUP_RELAY : -1;
}

// What a restore has to write so that it gets what the router has. A static IPv6 address goes without a
// network type, so with IPv6 alone its own source decides; with both families a static IPv4 address beside a
// dynamic IPv6 one is restored alone.
void read_modes(json_object *wan, BackupInternet *internet) {
    const std::string type = _json_get_str(wan, "networktype");
    const std::string protocol = _json_get_str(wan, "protocoltype");
    const bool static6 = internet->address6_source == BACKUP_SOURCE_STATIC;
    internet->router_mode = router_mode(_json_get_str(wan, "workmode"));
    if (type == "PPPoE") internet->sub_mode = BACKUP_PPPOE;
    if (type == "DHCP") internet->sub_mode = BACKUP_DHCP;
    if (type == "STATIC") internet->sub_mode = BACKUP_STATIC;
    if (internet->sub_mode != BACKUP_DHCP && internet->sub_mode != BACKUP_STATIC) return;
    internet->ip_mode = BACKUP_IPV4;
    if (protocol == "IPv6") {
        internet->ip_mode = BACKUP_IPV6;
        internet->sub_mode = static6 ? BACKUP_STATIC : BACKUP_DHCP;
    } else if (protocol == "IPv4/IPv6" && (internet->sub_mode == BACKUP_DHCP || static6)) {
        internet->ip_mode = BACKUP_IP_BOTH;
    }
}

void read_dns(json_object *wan, BackupInternet *internet) {
    std::string servers = _json_get_str(wan, "dns");
    for (char(&dns)[16] : internet->dns) {
        const size_t comma = servers.find(',');
        std::string server = servers.substr(0, comma);
        delete_strip_string_extra_characters(server.data());
        copy_text(dns, server.c_str());
        servers.erase(0, comma == std::string::npos ? comma : comma + 1);
    }
}

int read_relay(json_object *wan, BackupInternet *internet) {
    internet->radio_type = strcmp(_json_get_str(wan, "radio"), "5G") == 0 ? RADIO_5G : RADIO_2G;
    JsonRoot root;
    json_object *client = get_dev_info(radio_client(internet->radio_type), "get", &root);
    if (client == nullptr) return -1;
    read_daemon(RELAY, client, internet);
    return 0;
}

} // namespace

int get_backupInternet_config(json_object *document) {
    JsonRoot root;
    json_object *wan = get_dev_info("vrop.waninfo", "get", &root);
    if (wan == nullptr) return -1;
    BackupInternet internet;
    for (Fields rows : WAN_ROWS)
        read_daemon(rows, wan, &internet);
    read_modes(wan, &internet);
    read_dns(wan, &internet);
    if (internet.router_mode == BACKUP_RELAY && read_relay(wan, &internet) != 0) return -1;
    JsonRoot section(json_object_new_object());
    if (!section || add_rows(MODES, &internet, section.get()) != 0) return -1;
    if (add_rows(RELAY, &internet, section.get()) != 0) return -1;
    for (Fields rows : WAN_ROWS)
        if (add_rows(rows, &internet, section.get()) != 0) return -1;
    return add_section(document, INTERNET, std::move(section));
}
