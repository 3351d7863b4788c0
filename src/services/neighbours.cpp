// SPDX-License-Identifier: Apache-2.0
#include "services/neighbours.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/report_gate.h"
#include "properties/radio.h"
#include "properties/wifi_encryption.h"
#include "services/members.h"
#include "services/service.h"

namespace {

constexpr size_t MOST_NETWORKS = 64;

struct Network {
    std::string ssid, bssid;
    int32_t channel, rssi;
    int encryption;
};

// False for what cannot be joined by name: a hidden network, or one without an address.
bool read_network(json_object *entry, Network *network) {
    network->ssid = _json_get_str(entry, "ssid");
    network->bssid = _json_get_str(entry, "bssid");
    network->channel = _json_get_int(entry, "channel");
    network->rssi = _json_get_int(entry, "rssi");
    network->encryption = get_report_encrytion(JsonGetStr(entry, "authmode"));
    return !network->ssid.empty() && !network->bssid.empty();
}

std::vector<Network> networks_of(json_object *list) {
    std::vector<Network> networks;
    for (size_t i = 0; i < json_object_array_length(list); i++) {
        Network network;
        if (read_network(json_object_array_get_idx(list, i), &network)) networks.push_back(network);
    }
    std::stable_sort(networks.begin(), networks.end(),
                     [](const Network &one, const Network &other) { return one.rssi > other.rssi; });
    std::set<std::string> seen; // the strongest reading of an address counts
    std::erase_if(networks, [&](const Network &network) { return !seen.insert(network.bssid).second; });
    if (networks.size() > MOST_NETWORKS) networks.resize(MOST_NETWORKS);
    return networks;
}

JsonRoot network_object(const Network &network) {
    JsonRoot entry(json_object_new_object());
    JsonSetStr(entry.get(), nullptr, "ssid", network.ssid.c_str());
    JsonSetStr(entry.get(), nullptr, "bssid", network.bssid.c_str());
    JsonSetInt64(entry.get(), nullptr, "channel", network.channel);
    JsonSetInt64(entry.get(), nullptr, "rssi", network.rssi);
    JsonSetInt64(entry.get(), nullptr, "encryption", network.encryption);
    return entry;
}

ServiceAnswer scan(const ServiceRequest &request) {
    int64_t radio = RADIO_2G;
    if (take_integer(request.json, "radio", RADIO_2G, RADIO_5G, &radio) != Member::good)
        return answer_failed();
    const ServiceHoldsReports held;
    JsonRoot root;
    json_object *found = get_dev_info(radio_device(static_cast<int>(radio)), "scan", &root);
    if (!json_object_is_type(found, json_type_array)) {
        LOG_AT(request.site, "relayScan fail");
        return answer_failed();
    }
    JsonRoot list(json_object_new_array());
    for (const Network &network : networks_of(found))
        JsonAppend(list.get(), network_object(network));
    return answer_with_list("relayList", std::move(list));
}

constexpr Service RELAY_SCAN = {.name = "relayScan",
                                .entry = "relayScan_call ...\n",
                                .parameters = Parameters::needed,
                                .answers_bad_parameters = true};

} // namespace

int relayScan_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(RELAY_SCAN, {handle, id, parameters}, scan);
}
