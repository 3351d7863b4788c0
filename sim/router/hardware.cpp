// SPDX-License-Identifier: Apache-2.0
#include "sim/router/hardware.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "sim/router/world.h"

namespace router {
namespace {

namespace fs = std::filesystem;

constexpr char USB_STICK[] = "/sys/devices/usb1/1-1/sda";
constexpr char STICK_MOUNT[] = "/mnt/usb";
constexpr char FILLING[] = "/mnt/usb/filling";
constexpr char FORMAT_STATE[] = "/vrop.ecm/formatstate";
enum FormatState { GOOD = 0, AT_WORK = 1, BAD = 2 };
constexpr int KIB = 1024;

constexpr Field PORT[] = {required(text("name", 1, 15)), integer("speed", 10, 10000),
                          choice("duplex", "full|half"), choice("cable", "in|out")};
constexpr Field TEMPERATURE[] = {required(integer("zone", 0, 1)),
                                 required(integer("millicelsius", -40000, 200000))};
constexpr Field FORMAT[] = {required(text("diskpath", 1, 127))};
constexpr Field DISK[] = {choice("stick", "in|out"), integer("used", 0, 1024)};

bool is_ours() {
    return fs::exists("/sys") && !fs::exists("/sys/kernel");
}

// Names come from callers: nothing above the folder.
std::string interface_folder(const std::string &name) {
    if (name.find('/') != std::string::npos || name[0] == '.') throw Refused("no such interface");
    return "/sys/class/net/" + name;
}

void say(const fs::path &path, const std::string &value) {
    std::ofstream file(path, std::ios::trunc);
    file << value << '\n';
    if (!file.flush()) throw Refused("cannot write " + path.string());
}

void make_port(const std::string &name, bool cable) {
    const fs::path folder = interface_folder(name);
    fs::create_directories(folder / "device");
    say(folder / "type", "1");
    say(folder / "carrier", cable ? "1" : "0");
    say(folder / "speed", cable ? "1000" : "-1");
    say(folder / "duplex", cable ? "full" : "unknown");
}

void make_interfaces() {
    for (const char *name : {"wan", "lan1", "lan2"})
        make_port(name, true);
    make_port("lan3", false);
    make_port("wlan0", true);
    fs::create_directories("/sys/class/net/wlan0/phy80211");
    make_port("br-lan", true);
    fs::remove("/sys/class/net/br-lan/device");
}

void make_temperatures() {
    const char *names[] = {"cpu-thermal", "wifi-thermal"};
    for (int zone = 0; zone < 2; zone++) {
        const fs::path folder = "/sys/class/thermal/thermal_zone" + std::to_string(zone);
        fs::create_directories(folder);
        say(folder / "type", names[zone]);
        say(folder / "temp", std::to_string(48500 + 3000 * zone));
    }
    fs::create_directories("/sys/class/thermal/cooling_device0");
}

void put_stick(bool in) {
    fs::remove("/sys/block/sda");
    if (!in) return;
    fs::create_directories(fs::path(USB_STICK) / "sda1");
    say(fs::path(USB_STICK) / "removable", "0");
    say(fs::path(USB_STICK) / "sda1" / "partition", "1");
    fs::create_symlink(USB_STICK, "/sys/block/sda");
}

void make_disks() {
    fs::create_directories("/sys/block/mtdblock0");
    say("/sys/block/mtdblock0/removable", "0");
    put_stick(true);
}

void fill_stick(int kib) {
    std::ofstream file(FILLING, std::ios::trunc | std::ios::binary);
    file << std::string(static_cast<std::size_t>(kib) * KIB, 'x');
    file.flush(); // what does not fit makes it full
    if (kib == 0) fs::remove(FILLING);
}

void check_ours() {
    if (!is_ours()) throw Refused("the hardware is this machine's own");
}

JsonRoot change_port(World &, const Request &request) {
    check_ours();
    const fs::path folder = interface_folder(text_of(request.arguments, "name"));
    if (!fs::exists(folder / "device")) throw Refused("no such port");
    if (const std::string cable = text_of(request.arguments, "cable"); !cable.empty()) {
        say(folder / "carrier", cable == "in" ? "1" : "0");
        say(folder / "speed", cable == "in" ? "1000" : "-1");
        say(folder / "duplex", cable == "in" ? "full" : "unknown");
    }
    if (member(request.arguments, "speed"))
        say(folder / "speed", std::to_string(integer_of(request.arguments, "speed")));
    if (const std::string duplex = text_of(request.arguments, "duplex"); !duplex.empty())
        say(folder / "duplex", duplex);
    return result();
}

JsonRoot change_temperature(World &, const Request &request) {
    check_ours();
    say("/sys/class/thermal/thermal_zone" + std::to_string(integer_of(request.arguments, "zone")) + "/temp",
        std::to_string(integer_of(request.arguments, "millicelsius")));
    return result();
}

JsonRoot change_disk(World &, const Request &request) {
    check_ours();
    if (const std::string stick = text_of(request.arguments, "stick"); !stick.empty())
        put_stick(stick == "in");
    if (member(request.arguments, "used")) fill_stick(integer_of(request.arguments, "used"));
    return result();
}

// Without the stick the work comes to a bad end.
void finish_format(World &world) {
    if (world.state.integer(FORMAT_STATE) != AT_WORK) return; // a reset came between
    const bool is_in = is_ours() && fs::exists("/sys/block/sda");
    if (is_in)
        for (const auto &entry : fs::directory_iterator(STICK_MOUNT))
            fs::remove_all(entry.path());
    world.state.set(FORMAT_STATE, is_in ? GOOD : BAD);
}

JsonRoot format_stick(World &world, const Request &request) {
    check_ours();
    if (text_of(request.arguments, "diskpath") != STICK_MOUNT || !fs::exists("/sys/block/sda"))
        throw Refused("no such disk");
    if (world.state.integer(FORMAT_STATE) == AT_WORK) throw Refused("a disk is being formatted");
    world.state.set(FORMAT_STATE, AT_WORK);
    world.effects.later(world.state.integer("/sim/formattime"), [&world] { finish_format(world); });
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.ecm", "format", FORMAT, format_stick,
     "begin to format the disk mounted there; done /sim/formattime milliseconds later, see formatstate"},
    {"sim", "port", PORT, change_port, "a wired port's cable, speed in Mbit/s and duplex"},
    {"sim", "temperature", TEMPERATURE, change_temperature, "zone 0 is the CPU, zone 1 the radio"},
    {"sim", "disk", DISK, change_disk, "the USB stick comes or goes; that many KiB of its 1024 are used"},
};

} // namespace

Methods hardware_methods() {
    return ROWS;
}

bool make_hardware() {
    if (!is_ours()) return false;
    try {
        make_interfaces();
        make_temperatures();
        make_disks();
    } catch (const std::exception &) {
        return false;
    }
    return true;
}

} // namespace router
