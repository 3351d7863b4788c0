// SPDX-License-Identifier: Apache-2.0
// The device as a whole: restart, factory state, new firmware, export of the configuration.
#include <filesystem>
#include <fstream>

#include "sim/router/world.h"

namespace router {
namespace {

constexpr char EXPORT_FILE[] = "/aptmp/cfg_export_config_file.conf";

// What a reset leaves as it was: what the factory or the firmware wrote and the world around the router,
// always; at level 1 also the way to the Internet; at level 2 that and the Wi-Fi.
constexpr const char *KEPT[] = {"sim", "vrop.ftinfo", "vrop.qvtkconfig", "vrop.homewebinfo",
                                // from here on at level 1
                                "vrop.waninfo", "vrop.wifi.1.apclient", "vrop.wifi.2.apclient",
                                // from here on at level 2
                                "vrop.webwifisimple", "vrop.wifi.1.ap", "vrop.wifi.2.ap", "vrop.webwifi1adv",
                                "vrop.webwifi2adv", "vrop.wifi.guestwificontrol"};
constexpr std::size_t KEPT_ALWAYS = 4, KEPT_AT_LEVEL_1 = 7;

std::span<const char *const> kept_at(int level) {
    return std::span(KEPT).first(level == 1 ? KEPT_AT_LEVEL_1 : level == 2 ? std::size(KEPT) : KEPT_ALWAYS);
}

constexpr Field RESET[] = {integer("resetlevel", -0x7fffffff, 0x7fffffff)};
constexpr Field UPGRADE[] = {required(text("downurl", 1, 255)), flag("isreboot")};

int restart_delay(const World &world) {
    return world.state.integer("/sim/restartdelay");
}

JsonRoot reboot(World &world, const Request &) {
    world.restart_router(restart_delay(world));
    return result();
}

JsonRoot reset(World &world, const Request &request) {
    const int delay = restart_delay(world), level = integer_of(request.arguments, "resetlevel");
    world.restart_router(delay, [&world, level] { world.restore_factory_state(kept_at(level)); });
    return result();
}

// What an image says of itself: its first line, "version=...". "" when it says nothing.
std::string version_of_image(const std::string &path) {
    constexpr char KEY[] = "version=";
    constexpr std::streamsize LONGEST = 128;
    std::ifstream image(path, std::ios::binary);
    char line[LONGEST] = "";
    image.getline(line, LONGEST);
    const std::string text = line;
    return text.starts_with(KEY)
               ? text.substr(sizeof KEY - 1, text.find_last_not_of("\r\n ") + 2 - sizeof KEY)
               : "";
}

// The version that the router will run; what /sim/nextversion says counts before the image.
std::string version_after(const World &world, const std::string &image) {
    std::string version = world.state.text("/sim/nextversion");
    if (version.empty()) version = version_of_image(image);
    return version.empty() ? world.state.text("/vrop.ftinfo/iswversion") : version;
}

JsonRoot upgrade(World &world, const Request &request) {
    const std::string image = text_of(request.arguments, "downurl");
    std::error_code error;
    if (!std::filesystem::is_regular_file(image, error) || std::filesystem::file_size(image, error) == 0)
        throw Refused("no image " + image);
    const std::string version = version_after(world, image);
    const int delay = restart_delay(world);
    const auto flash = [&world, version] {
        if (world.state.find("/vrop.ftinfo")) world.state.set("/vrop.ftinfo/iswversion", version);
    };
    if (integer_of(request.arguments, "isreboot"))
        world.restart_router(delay, flash);
    else
        world.effects.later(delay, flash);
    return result();
}

JsonRoot export_configuration(World &world, const Request &) {
    std::ofstream file(EXPORT_FILE, std::ios::trunc);
    if (!file) throw Refused("cannot write " + std::string(EXPORT_FILE));
    file << json_text(world.state.root()) << "\n";
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.fota", "get", {}, show, "what an upgrade check says of the router, and where it is sent"},
    {"vrop", "reboot", {}, reboot, "restart the router, /sim/restartdelay milliseconds later"},
    {"vrop", "reset", RESET, reset,
     "back to the factory state, and restart; level 1 keeps the way to the Internet, 2 also the Wi-Fi"},
    {"vrop", "upgrade", UPGRADE, upgrade, "flash the image downurl; isreboot 1 restarts with its version"},
    {"vrop",
     "configexport",
     {},
     export_configuration,
     "leaves the settings in /aptmp/cfg_export_config_file.conf"},
};

} // namespace

Methods firmware_methods() {
    return ROWS;
}

} // namespace router
