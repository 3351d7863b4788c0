// SPDX-License-Identifier: Apache-2.0
// The radios and their access points: index 0 is the main network, index 2 the guests'.
#include "sim/router/wifi.h"

namespace router {
namespace {

constexpr Field SIMPLE[] = {
    flag("wifidual"),
    flag("wifi24apenable"),
    ssid("wifi24ssid"),
    key("wifi24key"),
    authmode("wifi24authmode"),
    flag("wifi5apenable"),
    ssid("wifi5ssid"),
    key("wifi5key"),
    authmode("wifi5authmode"),
    flag("use2_4gpwd"),
    flag("wifi5backup"),
    text("wifi5backup24ssid", 0, 32),
    text("wifi5backup5ssid", 0, 32),
};
constexpr Field SHARED[] = {flag("use2_4gpwd"), flag("wifi5backup")};

constexpr Field ENCRYPT = choice("encrypt", "NONE|AES|TKIP|TKIP/AES");
constexpr Field ADVANCED_2G[] = {
    number("bandwidth", "0|20|40"),
    integer("txpower", 0, 100),
    integer("channel", 0, 13),
    ENCRYPT,
    authmode("authmode"),
    choice("mode", "11b|11g|11n|11bg|11gn|11bgn|11bgnax"),
    flag("hide"),
    NOT_YET,
};
constexpr Field ADVANCED_5G[] = {
    number("bandwidth", "0|20|40|80|160"),
    integer("txpower", 0, 100),
    number("channel",
           "0|36|40|44|48|52|56|60|64|100|104|108|112|116|120|124|128|132|136|140|144|149|153|157|161|165"),
    ENCRYPT,
    authmode("authmode"),
    choice("mode", "11a|11n|11an|11ac|11anac|11ax|11anacax"),
    flag("hide"),
    NOT_YET,
};

constexpr Field INDEX = required(steering(integer("index", 0, 15)));
constexpr Field BY_INDEX[] = {INDEX};
constexpr Field ACCESS_POINT[] = {
    INDEX, flag("enable"), flag("hide"), ssid("ssid"), authmode("authmode"), key("key"), ENCRYPT, NOT_YET};

constexpr char NETWORKS_2G[] = "/vrop.wifi.1.ap", NETWORKS_5G[] = "/vrop.wifi.2.ap";
constexpr char INTERFERENCE_2G[] = "/vrop.wifi.1/interference",
               INTERFERENCE_5G[] = "/vrop.wifi.2/interference";
constexpr char CROWD_2G[] = "/vrop.wifi.1/crowd", CROWD_5G[] = "/vrop.wifi.2/crowd";
constexpr char SCORES_2G[] = "/vrop.wifi.1/channelscore", SCORES_5G[] = "/vrop.wifi.2/channelscore";
constexpr char SCORES[] = "vrop.wifi.getchannelscore"; // the reply's member, for either radio
constexpr const char *RADIOS[][2] = {{NETWORKS_2G, "2.4G"}, {NETWORKS_5G, "5G"}};

// Stores a change of networks; the stations of a renamed network come back under its new name.
void store_networks(World &world, const std::string &place, const Request &request) {
    JsonRoot before[] = {copy_json(world.state.find(RADIOS[0][0])),
                         copy_json(world.state.find(RADIOS[1][0]))};
    store_at(world, place, request);
    for (std::size_t radio = 0; radio < std::size(before); radio++)
        for (std::size_t i = 0; i < length_of(before[radio].get()); i++) {
            const std::string old = text_of(element(before[radio].get(), i), "ssid");
            const std::string now = text_of(element(world.state.find(RADIOS[radio][0]), i), "ssid");
            if (old != now) rename_network(world, RADIOS[radio][1], old, now);
        }
}

// The state has one value for all channels and, under "crowd", others for channels that differ.
JsonRoot show_interference(World &world, const Request &request) {
    const bool first = place_of(request.row) == INTERFERENCE_2G;
    const std::string channel =
        world.state.text(first ? "/vrop.webwifi1adv/currentchannel" : "/vrop.webwifi2adv/currentchannel");
    JsonRoot values = world.state.view(place_of(request.row));
    json_object *crowd = world.state.find(std::string(first ? CROWD_2G : CROWD_5G) + "/" + channel);
    for (const char *name : {"interferencepercent", "noise"})
        if (json_object *value = member(crowd, name)) put(values.get(), name, copy_json(value));
    return named_reply(request, std::move(values));
}

JsonRoot set_simple(World &world, const Request &request) {
    check_key(world, request, "/vrop.webwifisimple", "wifi24key", "wifi24authmode");
    check_key(world, request, "/vrop.webwifisimple", "wifi5key", "wifi5authmode");
    if (json_object_object_length(request.arguments) == 0) throw Refused("no parameter");
    store_networks(world, place_of(request.row), request);
    const int on =
        world.state.integer("/vrop.wifi.1.ap/0/enable") || world.state.integer("/vrop.wifi.2.ap/0/enable");
    world.state.set("/vrop.webwifisimple/wifiswitch", on);
    return result();
}

JsonRoot set_advanced(World &world, const Request &request) {
    store(world, request);
    const std::string place = place_of(request.row);
    if (int channel = integer_of(request.arguments, "channel")) // 0: the radio chooses, and stays where it is
        world.state.set(place + "/currentchannel", channel);
    return result();
}

// The place of the access point that the call names; "" when there is none.
std::string access_point(const World &world, const Request &request) {
    const std::string networks = place_of(request.row);
    return place_at(networks,
                    index_of(world.state.find(networks), "index", integer_of(request.arguments, "index")));
}

JsonRoot get_access_point(World &world, const Request &request) {
    return reply_of_getby(request, view_at(world, access_point(world, request)));
}

JsonRoot set_access_point(World &world, const Request &request) {
    std::string place = access_point(world, request);
    if (place.empty())
        throw Refused(std::string(request.row.object) + "." + text_of(request.arguments, "index") +
                      " not found");
    check_key(world, request, place, "key", "authmode");
    store_networks(world, place, request);
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.webwifisimple", "get", {}, show, "both main networks at a glance"},
    {"vrop.webwifisimple", "set", SIMPLE, set_simple, "change both main networks at once"},
    {"vrop.wifi", "get", {}, show, "what both radios share"},
    {"vrop.wifi", "set", SHARED, store, "change it"},
    {"vrop.webwifi1adv", "get", {}, show, "2.4 GHz radio: power in percent, bandwidth in MHz, 0 automatic"},
    {"vrop.webwifi1adv", "set", ADVANCED_2G, set_advanced, "change the 2.4 GHz radio"},
    {"vrop.webwifi2adv", "get", {}, show, "5 GHz radio, as the 2.4 GHz one"},
    {"vrop.webwifi2adv", "set", ADVANCED_5G, set_advanced, "change the 5 GHz radio"},
    {"vrop.wifi.1.ap", "list", {}, show, "networks of the 2.4 GHz radio; index 2 is the guests'"},
    {"vrop.wifi.2.ap", "list", {}, show, "networks of the 5 GHz radio"},
    {"vrop.wifi.1.ap.modify", "getbyindex", BY_INDEX, get_access_point, "one 2.4 GHz network", NETWORKS_2G},
    {"vrop.wifi.1.ap.modify", "set", ACCESS_POINT, set_access_point, "change it", NETWORKS_2G},
    {"vrop.wifi.2.ap.modify", "getbyindex", BY_INDEX, get_access_point, "one 5 GHz network", NETWORKS_5G},
    {"vrop.wifi.2.ap.modify", "set", ACCESS_POINT, set_access_point, "change it", NETWORKS_5G},
    {"vrop.wifi.1",
     "getinterference",
     {},
     show_interference,
     "noise in dBm, interference in percent, on the present channel",
     INTERFERENCE_2G},
    {"vrop.wifi.1", "getchannelscore", {}, show, "score of each channel, 100 is best", SCORES_2G, SCORES},
    {"vrop.wifi.2", "getinterference", {}, show_interference, "the same at 5 GHz", INTERFERENCE_5G},
    {"vrop.wifi.2", "getchannelscore", {}, show, "the same at 5 GHz", SCORES_5G, SCORES},
};

} // namespace

void check_key(const World &world, const Request &request, const std::string &place, const char *key_name,
               const char *authmode_name) {
    json_object *given = member(request.arguments, key_name);
    if (given && text_after(world, request, place, authmode_name) != "NONE" &&
        json_object_get_string_len(given) < 8)
        throw Refused("parameter format incorrect: '" + std::string(key_name) + "'");
}

Methods wifi_methods() {
    return ROWS;
}

} // namespace router
