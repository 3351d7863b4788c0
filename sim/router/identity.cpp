// SPDX-License-Identifier: Apache-2.0
// Who the router is and how it is registered; its account, LED and mesh settings.
#include "sim/router/world.h"

namespace router {
namespace {

constexpr Field CONFIG[] = {
    text("productkey", 0, 63),    text("productsecret", 0, 63),   text("registerurl", 0, 127),
    text("backupurl", 0, 127),    text("reporturl", 0, 127),      text("timeurl", 0, 127),
    text("productid", 0, 63),     text("cachepath", 0, 127),      text("devicesecret", 0, 63),
    text("logpath", 0, 127),      text("upgradelogpath", 0, 127), integer("networkwaittime", 0, 3600),
    text("formatflag", 0, 127),   text("upgradeprourl", 0, 127),  text("ecmanagerurl", 0, 127),
    text("tebralogpath", 0, 127),
};
constexpr Field ACCOUNT[] = {required(text("user", 1, 63)), required(text("oldpasswd", 0, 88)),
                             required(text("newpasswd", 4, 88))};
constexpr Field LED[] = {required(choice("status", "on|off"))};
constexpr Field MESH[] = {required(flag("enable")), integer("role", 0, 2)};
constexpr Field STORAGE[] = {text("hcdnpath", 0, 127), steering(flag("cutusb")),
                             flag("hcdn_open"),        flag("samba"),
                             flag("inmemoryop"),       flag("outmemoryop")};

// The texts are Base64; they are compared and kept as they are.
JsonRoot set_account(World &world, const Request &request) {
    const bool right = text_of(request.arguments, "user") == world.state.text("/account/user") &&
                       text_of(request.arguments, "oldpasswd") == world.state.text("/account/passwd");
    if (!right) throw Refused("wrong user or password");
    world.state.set("/account/passwd", text_of(request.arguments, "newpasswd"));
    return result();
}

JsonRoot set_mesh(World &world, const Request &request) {
    store(world, request);
    const int on = world.state.integer("/vrop.mesh/enable");
    world.state.set("/vrop.mesh/status", on);
    world.state.set("/vrop.mesh/current_role", on ? world.state.integer("/vrop.mesh/role") : 0);
    return result();
}

JsonRoot connect_mesh(World &world, const Request &) {
    if (!world.state.integer("/vrop.mesh/enable")) throw Refused("mesh is off");
    world.state.set("/vrop.mesh/status", 2);
    return result();
}

JsonRoot cut_usb(World &world, const Request &request) {
    store(world, request);
    if (integer_of(request.arguments, "cutusb")) world.state.set("/vrop.ecm/mounted", 0);
    return result();
}

constexpr Method ROWS[] = {
    {"vrop.qvtkconfig", "get", {}, show, "registration with the cloud"},
    {"vrop.qvtkconfig", "set", CONFIG, store, "change the registration"},
    {"vrop.ftinfo", "get", {}, show, "what the factory wrote: model, versions, sn, mac"},
    {"vrop.devinfo", "get", {}, show, "model, sn and mac"},
    {"vrop.devinfo", "getaccount", {}, show, "web account: user, passwd in Base64", "/account"},
    {"vrop.devinfo", "setaccount", ACCOUNT, set_account, "change its password; both in Base64"},
    {"vrop.ledswitch", "get", {}, show, "LEDs on or off"},
    {"vrop.ledswitch", "set", LED, store, "switch the LEDs"},
    {"vrop.mesh", "get", {}, show, "mesh: enable, role, current_role; status 0 off, 1 on, 2 connecting"},
    {"vrop.mesh", "set", MESH, set_mesh, "switch mesh; role 0 automatic, 1 controller, 2 agent"},
    {"vrop.mesh", "connect", {}, connect_mesh, "start pairing; refused while mesh is off"},
    {"vrop.ecm", "get", {}, show, "USB storage; formatstate 0 good, 1 at work, 2 bad"},
    {"vrop.ecm", "set", STORAGE, cut_usb, "cutusb 1 detaches the disk; the switches of ecm.conf take effect"},
};

} // namespace

Methods identity_methods() {
    return ROWS;
}

} // namespace router
