// SPDX-License-Identifier: Apache-2.0
#include "services/ports.h"

#include <unistd.h>
#include <utility>

#include "core/folder.h"
#include "core/json_path.h"
#include "services/service.h"

namespace {

constexpr char INTERFACES[] = "/sys/class/net/";
constexpr long ETHERNET = 1; // ARPHRD_ETHER

bool has(const std::string &path) {
    return access(path.c_str(), F_OK) == 0;
}

// Bridges, tunnels and VLANs have no device; the radios' interfaces say so.
bool is_wired_port(const std::string &folder) {
    return has(folder + "/device") && !has(folder + "/wireless") && !has(folder + "/phy80211") &&
           line_number(first_line(folder + "/type"), 0) == ETHERNET;
}

JsonRoot port_object(const std::string &name, const std::string &folder) {
    const bool link = line_number(first_line(folder + "/carrier"), 0) == 1;
    const long speed = line_number(first_line(folder + "/speed"), 0);
    const std::string duplex = first_line(folder + "/duplex");
    JsonRoot port(json_object_new_object());
    JsonSetStr(port.get(), nullptr, "name", name.c_str());
    JsonSetBool(port.get(), nullptr, "link", link);
    JsonSetInt64(port.get(), nullptr, "speed", link && speed > 0 ? speed : 0);
    JsonSetStr(port.get(), nullptr, "duplex",
               duplex == "full" || duplex == "half" ? duplex.c_str() : "unknown");
    return port;
}

ServiceAnswer list_ports(const ServiceRequest &) {
    JsonRoot ports(json_object_new_array());
    for (const std::string &name : folder_names(INTERFACES))
        if (is_wired_port(INTERFACES + name)) JsonAppend(ports.get(), port_object(name, INTERFACES + name));
    return answer_with_list("ports", std::move(ports));
}

constexpr Service PORT_LINK_SPEED = {.name = "portLinkSpeed", .entry = "portLinkSpeed_call ...\n"};

} // namespace

int portLinkSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(PORT_LINK_SPEED, {handle, id, parameters}, list_ports);
}
