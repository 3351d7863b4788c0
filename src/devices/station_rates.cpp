// SPDX-License-Identifier: Apache-2.0
#include "devices/station_rates.h"

#include <algorithm>

#include "core/json_path.h"
#include "core/text.h"
#include "devices/device_document.h"
#include "devices/station.h"

bool read_station_rates(std::vector<StationRates> *rates) {
    JsonRoot root;
    json_object *stations = get_station_array(&root);
    if (!stations) return false;
    rates->clear();
    for (size_t i = 0; i < std::min(json_object_array_length(stations), MOST_DEVICES); i++) {
        json_object *station = json_object_array_get_idx(stations, i);
        const char *mac = JsonGetStr(station, "mac");
        if (!mac || mac[0] == '\0') continue;
        StationRates &added = rates->emplace_back();
        copy_text(added.mac, mac);
        added.active = _json_get_int(station, "active") > 0;
        copy_text(added.rxrate, JsonGetStr(station, "rxrate"));
        copy_text(added.txrate, JsonGetStr(station, "txrate"));
    }
    return true;
}

std::vector<StationRates> get_station_rates() {
    std::vector<StationRates> rates;
    read_station_rates(&rates);
    return rates;
}

int get_alldevice_num() {
    return static_cast<int>(get_station_rates().size());
}

int get_device_num() {
    const std::vector<StationRates> rates = get_station_rates();
    return static_cast<int>(std::count_if(rates.begin(), rates.end(),
                                          [](const StationRates &station) { return station.active; }));
}
