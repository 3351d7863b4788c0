// SPDX-License-Identifier: Apache-2.0
#include "services/lan_rates.h"

#include <cstring>

#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "devices/station_rates.h"
#include "properties/rate.h"

namespace {

// What the daemon counts as received is what comes down to the device, as it does for the WAN.
int down_speed(const StationRates &station) {
    return bytes_per_second(station.rxrate);
}

int up_speed(const StationRates &station) {
    return bytes_per_second(station.txrate);
}

Text<128> members_of(const StationRates &station) {
    return format_text<128>(R"("upSpeed": %d, "downSpeed": %d, "networkStatus":%d})", up_speed(station),
                            down_speed(station), station.active);
}

} // namespace

int get_one_lanDeviceInfo(const char *mac, int device_count, char *output, int length) {
    if (mac == nullptr || *mac == '\0' || output == nullptr || length <= 0) {
        LOG("param is NULL");
        return -1;
    }
    std::vector<StationRates> stations;
    if (!read_station_rates(&stations)) return -1;
    for (const StationRates &station : stations) {
        if (device_count-- <= 0) return -1;
        if (strcmp(station.mac, mac) != 0) continue;
        LOG("find corresponding mac");
        if (station.active) {
            snprintf(output, static_cast<size_t>(length), "{%s", members_of(station).text);
            return 0;
        }
        LOG("the device is offline");
        return -1;
    }
    return -1;
}

int get_lanDeviceInfo(std::string *document) {
    std::vector<StationRates> stations;
    if (!read_station_rates(&stations)) return -1;
    std::string entries;
    int i = 0;
    for (const StationRates &station : stations) {
        LOG("active:%d", station.active);
        if (station.active) {
            LOG("i:%d downspeed:%d", i, down_speed(station));
            LOG("i:%d upseed:%d", i, up_speed(station));
            entries += (entries.empty() ? R"({"mac": )" : R"(, {"mac": )") + JsonQuote(station.mac) + ", " +
                       members_of(station).text;
        }
        i++;
    }
    *document = R"({"monitorSpeeds": [)" + entries + "]}";
    return 0;
}
