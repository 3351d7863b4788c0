// SPDX-License-Identifier: Apache-2.0
// Parental control: the supervised devices, their switches, and timed disconnections.
#include <algorithm>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char DEVICES[] = "/vrop.parent.control/device";
constexpr char LEFT[] = "/sim/disconnected/"; // + MAC: seconds until the device may connect again

constexpr Field DEVICE = required(steering(mac("mac")));
constexpr Field NAME = text("hostname", 0, 127);
constexpr Field BY_MAC[] = {DEVICE};
constexpr Field ADD[] = {DEVICE, required(NAME)};
constexpr Field SWITCHES[] = {DEVICE,
                              NAME,
                              flag("funcenable"),
                              flag("devurlenable"),
                              flag("devtimeenable"),
                              integer("disconnect", 0, 15),
                              integer("disconnecttime", 0, 0x7fffffff),
                              integer("disconnectsettime", 0, 0x7fffffff)};
constexpr Field GLOBAL[] = {required(flag("enable"))};
constexpr Field DELETE[] = {required(steering(flag("delall"))), steering(mac("mac"))};

std::string place_of_device(const World &world, const std::string &mac) {
    return place_at(DEVICES, index_of_mac(world.state.find(DEVICES), mac));
}

// The place of the device that the call is about; throws Refused when it is not under supervision.
std::string supervised_place(const World &world, const Request &request) {
    const std::string mac = text_of(request.arguments, "mac");
    std::string place = place_of_device(world, mac);
    if (place.empty()) throw Refused("vrop.parent.control." + mac + " not found");
    return place;
}

// The place of the device, put under supervision if it is not yet.
std::string supervise(World &world, const Request &request) {
    const std::string mac = text_of(request.arguments, "mac");
    if (std::string place = place_of_device(world, mac); !place.empty()) return place;
    JsonRoot device = new_object();
    put(device.get(), "mac", spell_mac(mac));
    put(device.get(), "hostname", text_of(request.arguments, "hostname"));
    for (const char *name : {"today", "yesterday", "week"})
        put(device.get(), name, std::string("00000000"));
    for (const char *name :
         {"funcenable", "devurlenable", "devtimeenable", "disconnect", "disconnecttime", "disconnectsettime"})
        put(device.get(), name, 0);
    json_object_array_add(world.state.at(DEVICES), device.release());
    return place_of_device(world, mac);
}

JsonRoot list_devices(World &world, const Request &request) {
    JsonRoot list = new_object(), devices(json_object_new_array());
    json_object *all = world.state.find(DEVICES);
    for (std::size_t i = 0; i < length_of(all); i++) {
        JsonRoot device = new_object();
        for (const char *name : {"mac", "hostname", "today", "yesterday", "week"})
            if (json_object *value = member(element(all, i), name)) put(device.get(), name, copy_json(value));
        json_object_array_add(devices.get(), device.release());
    }
    put(list.get(), "device", std::move(devices));
    return named_reply(request, std::move(list));
}

JsonRoot get_device(World &world, const Request &request) {
    const std::string place = place_of_device(world, text_of(request.arguments, "mac"));
    return reply_of_getby(request, view_at(world, place));
}

JsonRoot add_device(World &world, const Request &request) {
    const std::string place = supervise(world, request);
    world.state.set(place + "/hostname", text_of(request.arguments, "hostname"));
    return result();
}

JsonRoot set_device(World &world, const Request &request) {
    const std::string place = supervised_place(world, request);
    store_at(world, place, request);
    if (member(request.arguments, "disconnect")) {
        const bool on = world.state.integer(place + "/disconnect") > 0;
        world.state.set(LEFT + world.state.text(place + "/mac"),
                        on ? world.state.integer(place + "/disconnecttime") : 0);
    }
    return result();
}

JsonRoot delete_devices(World &world, const Request &request) {
    if (integer_of(request.arguments, "delall")) {
        world.state.set(DEVICES, JsonRoot(json_object_new_array()));
        return result();
    }
    world.state.erase(supervised_place(world, request));
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.parent.control", "list", {}, list_devices, "supervised devices; online times as DDHHMMSS"},
    {"vrop.parent.control", "getbymac", BY_MAC, get_device, "switches and disconnection of one"},
    {"vrop.parent.control", "add", ADD, add_device, "supervise a device"},
    {"vrop.parent.control", "setdev", SWITCHES, set_device, "change the switches of a supervised device"},
    {"vrop.parent.control", "setenable", GLOBAL, store, "switch parental control as a whole"},
    {"vrop.parent.control", "delete", DELETE, delete_devices, "stop supervising one device, or all"},
};

} // namespace

Methods parental_methods() {
    return ROWS;
}

bool is_disconnected(const World &world, const std::string &mac) {
    const std::string place = place_of_device(world, mac);
    return !place.empty() && world.state.integer(place + "/disconnect") > 0;
}

bool is_out_of_hours(const World &world, const std::string &mac) {
    const std::string place = place_of_device(world, mac);
    return !place.empty() && world.state.integer("/vrop.parent.control/enable") &&
           world.state.integer(place + "/funcenable") && world.state.integer(place + "/devtimeenable") &&
           is_outside_windows(world, mac);
}

void elapse_disconnections(World &world, int seconds) {
    json_object *devices = world.state.find(DEVICES);
    for (std::size_t i = 0; i < length_of(devices); i++) {
        json_object *device = element(devices, i);
        const std::string left = LEFT + text_of(device, "mac");
        const int before = world.state.integer(left);
        if (before <= 0) continue;
        world.state.set(left, std::max(0, before - seconds));
        if (before <= seconds) put(device, "disconnect", 0);
    }
}

} // namespace router
