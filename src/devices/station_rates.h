// SPDX-License-Identifier: Apache-2.0
// The client devices as the speed services need them. Any thread; each call asks the daemon once.
#pragma once

#include <vector>

struct StationRates {
    char mac[16];
    bool active;
    char rxrate[32]; // megabits per second, as the daemon writes them: "25.00"; empty when it does not say
    char txrate[32];
};

// Those of the router's first 128 stations that have a MAC, in its order. False when it does not answer,
// which is logged.
bool read_station_rates(std::vector<StationRates> *rates);
// The same; none when it does not answer.
std::vector<StationRates> get_station_rates();

// How many of them there are; how many are connected now.
int get_alldevice_num();
int get_device_num();
