// SPDX-License-Identifier: Apache-2.0
#include "household.h"

#include <functional>

#include "bare_bus.h"
#include "core/text.h"
#include "devices/runtime_file.h"

namespace bench {

namespace {

constexpr const char *PLACES[] = {"/vrop.laninfo", "/vrop.parent.control/device", "/vrop.parent.urlcontrol",
                                  "/vrop.parent.timecontrol"};

// An array with what `element` writes for each number.
std::string list_of(int count, const std::function<std::string(int)> &element) {
    std::string list = "[";
    for (int i = 0; i < count; i++)
        list += (i > 0 ? "," : "") + element(i);
    return list + "]";
}

std::string with_mac(int number, const std::string &members) {
    return format_text<32>(R"({"mac":"02a0c8%06x",)", static_cast<unsigned>(number)).text + members + "}";
}

// Half of them on each radio, a quarter of them limited.
std::string station(int number) {
    const bool fast = number % 2 != 0;
    const Text<256> text = format_text<256>(
        R"("ipaddr":"192.168.10.%d","devname":"Device %d","hostname":"host-%d","active":1,"radio":"%s","ssid":"%s",)"
        R"("limitrateswitch":%d,"usbandwidth":2048,"dsbandwidth":8192,"uptime":%d,"statype":"phone",)"
        R"("rxrate":"1.50","txrate":"0.20")",
        number + 2, number, number, fast ? "5G" : "2.4G", fast ? "Home_5G" : "Home", number % 4 == 0,
        number * 60);
    return with_mac(number, text.text);
}

std::string supervised(int number) {
    return with_mac(number, R"("hostname":"x","today":"00013005","yesterday":"00021500","week":"00104500",)"
                            R"("funcenable":1,"devurlenable":1,"devtimeenable":1,"disconnect":0,)"
                            R"("disconnecttime":0,"disconnectsettime":0)");
}

std::string url_rules(int number) {
    return with_mac(number,
                    R"("filterType":"black","list":[{"enable":1,"url":"games.example.com","index":0},)"
                    R"({"enable":1,"url":"play.example.net","appname":"Blocks","apptype":1,"index":1}])");
}

std::string time_rules(int number) {
    return with_mac(number,
                    R"("list":[{"enable":1,"timestart":"0830","timeend":"2105","week":"06","index":0}])");
}

// As the agent writes it.
std::string runtime(int number) {
    return format_text<128>(
               R"({"mac":"02:A0:C8:00:%02X:%02X","name":"Device %d","runTime":%d,"timestamp":1714550400,)"
               R"("onlineNotice":1})",
               static_cast<unsigned>(number) >> 8, static_cast<unsigned>(number) & 0xff, number, number * 60)
        .text;
}

} // namespace

Household::Household() {
    for (size_t i = 0; i < home_.size(); i++)
        home_[i] = router_value(PLACES[i]);
    put(0, list_of(STATIONS, station));
    put(1, list_of(SUPERVISED, supervised));
    put(2, list_of(SUPERVISED, url_rules));
    put(3, list_of(SUPERVISED, time_rules));
    JsonRoot runtimes(json_tokener_parse(list_of(STATIONS, runtime).c_str()));
    complete_ = write_runtime_file(runtimes.get()) && complete_;
}

Household::~Household() {
    for (size_t i = 0; i < home_.size(); i++)
        put(i, home_[i]);
    remove_runtime_file();
}

void Household::put(size_t place, const std::string &json) {
    complete_ = set_router_value(PLACES[place], json) && complete_;
}

} // namespace bench
