// SPDX-License-Identifier: Apache-2.0
#include "services/station_quality.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "core/json_path.h"
#include "devices/device_lookups.h"
#include "devices/station.h"
#include "properties/radio.h"
#include "services/members.h"
#include "services/service.h"

namespace {

constexpr size_t LONGEST_MAC = 17; // twelve digits and five colons
constexpr size_t MAC_DIGITS = 12;
constexpr int GOOD_FROM = -65, FAIR_FROM = -75; // dBm

// The digits of a MAC in small letters; "" when it is none.
std::string digits_of(const std::string &mac) {
    std::string digits;
    for (char each : mac)
        if (each != ':') digits += static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
    const bool is_mac =
        digits.size() == MAC_DIGITS && std::all_of(digits.begin(), digits.end(), [](char each) {
            return std::isxdigit(static_cast<unsigned char>(each)) != 0;
        });
    return is_mac ? digits : "";
}

int quality_of(int rssi) {
    return rssi >= GOOD_FROM ? 0 : rssi >= FAIR_FROM ? 1 : 2;
}

// The station's object; null for one that no radio hears.
JsonRoot quality_object(json_object *station) {
    int32_t rssi = 0;
    const int radio = get_joinWay(JsonGetStr(station, "radio")); // the cloud counts radios so too
    const bool wireless = radio == CLOUD_RADIO_2G || radio == CLOUD_RADIO_5G;
    if (!wireless || JsonGetInt64(station, "active") != 1 || !JsonReadInt(station, "rssi", &rssi))
        return nullptr;
    JsonRoot entry(json_object_new_object());
    JsonSetStr(entry.get(), nullptr, "mac", JsonGetStr(station, "mac"));
    JsonSetStr(entry.get(), nullptr, "name", station_name(station));
    JsonSetInt64(entry.get(), nullptr, "radio", radio);
    JsonSetInt64(entry.get(), nullptr, "rssi", rssi);
    JsonSetInt64(entry.get(), nullptr, "quality", quality_of(rssi));
    return entry;
}

// Those that are meant; "" is everybody.
JsonRoot quality_list(json_object *stations, const std::string &wanted) {
    JsonRoot list(json_object_new_array());
    for (size_t i = 0; i < json_object_array_length(stations); i++) {
        json_object *station = json_object_array_get_idx(stations, i);
        const char *mac = JsonGetStr(station, "mac");
        if (mac != nullptr && (wanted.empty() || digits_of(mac) == wanted))
            JsonAppend(list.get(), quality_object(station));
    }
    return list;
}

ServiceAnswer check(const ServiceRequest &request) {
    std::string mac;
    const Member given = take_text(request.json, "mac", LONGEST_MAC, &mac);
    const std::string wanted = digits_of(mac);
    if (given == Member::bad || (given == Member::good && wanted.empty())) return answer_failed();
    JsonRoot root;
    json_object *stations = get_station_array(&root);
    if (stations == nullptr) return answer_failed();
    return answer_with_list("devices", quality_list(stations, wanted));
}

constexpr Service RSSI_QUALITY_CHECK = {.name = "rssiQualityCheck",
                                        .entry = "rssiQualityCheck_call ...\n",
                                        .parameters = Parameters::optional,
                                        .answers_bad_parameters = true};

} // namespace

int rssiQualityCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(RSSI_QUALITY_CHECK, {handle, id, parameters}, check);
}
