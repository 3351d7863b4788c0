// SPDX-License-Identifier: Apache-2.0
#include "services/station_rates.h"

#include <algorithm>
#include <cstring>

#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "devices/station.h"
#include "properties/rate.h"

namespace {

// What the daemon counts as received is what comes down to the device, as it does for the WAN.
struct Rates {
    int down, up, status;
};

Text<16> mac_of(json_object *station) {
    return format_text<16>("%s", _json_get_str(station, "mac"));
}

int active_of(json_object *station) {
    return _json_get_int(station, "active");
}

Rates rates_of(json_object *station) {
    return {bytes_per_second(_json_get_str(station, "rxrate")),
            bytes_per_second(_json_get_str(station, "txrate")), active_of(station)};
}

Text<128> rates_text(const Rates &rates) {
    return format_text<128>(R"("upSpeed": %d, "downSpeed": %d, "networkStatus":%d})", rates.up, rates.down,
                            rates.status);
}

size_t count_of(json_object *stations, int limit) {
    return std::min(json_object_array_length(stations), static_cast<size_t>(std::max(limit, 0)));
}

json_object *find_station(json_object *stations, const char *mac, int device_count) {
    for (size_t i = 0; i < count_of(stations, device_count); i++) {
        json_object *station = json_object_array_get_idx(stations, i);
        if (strcmp(mac_of(station).text, mac) == 0) return station;
    }
    return nullptr;
}

// The device's entry of the list; "" for one that is offline or has no MAC.
std::string entry_of(json_object *station, size_t i) {
    if (mac_of(station).text[0] == '\0') return {};
    const int active = active_of(station);
    LOG("active:%d", active);
    if (active <= 0) return {};
    const Rates rates = rates_of(station);
    LOG("i:%d downspeed:%d", static_cast<int>(i), rates.down);
    LOG("i:%d upseed:%d", static_cast<int>(i), rates.up);
    return R"({"mac": )" + JsonQuote(mac_of(station).text) + ", " + rates_text(rates).text;
}

} // namespace

int get_one_lanDeviceInfo(const char *mac, int device_count, char *output, int length) {
    if (mac == nullptr || *mac == '\0' || output == nullptr || length <= 0) {
        LOG("param is NULL");
        return -1;
    }
    JsonRoot root;
    json_object *stations = get_station_array(&root);
    json_object *station = stations == nullptr ? nullptr : find_station(stations, mac, device_count);
    if (station == nullptr) return -1;
    LOG("find corresponding mac");
    if (active_of(station) <= 0) {
        LOG("the device is offline");
        return -1;
    }
    snprintf(output, static_cast<size_t>(length), "{%s", rates_text(rates_of(station)).text);
    return 0;
}

int get_lanDeviceInfo(std::string *document) {
    JsonRoot root;
    json_object *stations = get_station_array(&root);
    if (stations == nullptr) return -1;
    std::string entries;
    for (size_t i = 0; i < count_of(stations, DEVICES_MAX); i++) {
        const std::string entry = entry_of(json_object_array_get_idx(stations, i), i);
        if (!entry.empty()) entries += (entries.empty() ? "" : ", ") + entry;
    }
    *document = R"({"monitorSpeeds": [)" + entries + "]}";
    return 0;
}
