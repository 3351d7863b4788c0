// SPDX-License-Identifier: Apache-2.0
#include "sim/router/state.h"

namespace router {
namespace {

struct Link {
    const char *shown; // the place where the fact is shown besides its own
    const char *place;
};

// The places themselves are no links.
constexpr Link LINKS[] = {
    {"/vrop.devinfo/model", "/vrop.ftinfo/model"},
    {"/vrop.devinfo/sn", "/vrop.ftinfo/sn"},
    {"/vrop.devinfo/mac", "/vrop.ftinfo/mac"},
    {"/vrop.fota/sn", "/vrop.ftinfo/sn"},
    {"/vrop.fota/mac", "/vrop.ftinfo/mac"},
    {"/vrop.fota/manufacturer", "/vrop.ftinfo/odmvendor"},
    {"/vrop.fota/hardware", "/vrop.ftinfo/ihdversion"},
    {"/vrop.fota/version", "/vrop.ftinfo/iswversion"},
    {"/vrop.fota/province", "/vrop.ftinfo/province"},
    {"/vrop.fota/id", "/vrop.qvtkconfig/productkey"},
    {"/vrop.fota/key", "/vrop.qvtkconfig/devicesecret"},
    {"/vrop.homewebinfo/ipaddr", "/vrop.waninfo/ipaddr"},
    {"/vrop.homewebinfo/status", "/vrop.waninfo/status"},
    {"/vrop.webwifisimple/wifi24apenable", "/vrop.wifi.1.ap/0/enable"},
    {"/vrop.webwifisimple/wifi24ssid", "/vrop.wifi.1.ap/0/ssid"},
    {"/vrop.webwifisimple/wifi24key", "/vrop.wifi.1.ap/0/key"},
    {"/vrop.webwifisimple/wifi24authmode", "/vrop.wifi.1.ap/0/authmode"},
    {"/vrop.webwifisimple/wifi5apenable", "/vrop.wifi.2.ap/0/enable"},
    {"/vrop.webwifisimple/wifi5ssid", "/vrop.wifi.2.ap/0/ssid"},
    {"/vrop.webwifisimple/wifi5key", "/vrop.wifi.2.ap/0/key"},
    {"/vrop.webwifisimple/wifi5authmode", "/vrop.wifi.2.ap/0/authmode"},
    {"/vrop.webwifi1adv/authmode", "/vrop.wifi.1.ap/0/authmode"},
    {"/vrop.webwifi1adv/encrypt", "/vrop.wifi.1.ap/0/encrypt"},
    {"/vrop.webwifi1adv/hide", "/vrop.wifi.1.ap/0/hide"},
    {"/vrop.webwifi2adv/authmode", "/vrop.wifi.2.ap/0/authmode"},
    {"/vrop.webwifi2adv/encrypt", "/vrop.wifi.2.ap/0/encrypt"},
    {"/vrop.webwifi2adv/hide", "/vrop.wifi.2.ap/0/hide"},
    {"/vrop.wifi/use2_4gpwd", "/vrop.webwifisimple/use2_4gpwd"},
    {"/vrop.wifi/wifi5backup", "/vrop.webwifisimple/wifi5backup"},
    {"/vrop.wifi.1.apclient/relay", "/vrop.wifi.1.apclient/keepwifiupflag"},
    {"/vrop.wifi.2.apclient/relay", "/vrop.wifi.2.apclient/keepwifiupflag"},
};

std::string resolve(const std::string &pointer) {
    for (const Link &link : LINKS)
        if (pointer == link.shown) return link.place;
    return pointer;
}

JsonRoot parse_object(const std::string &json) {
    JsonRoot root = parse_json(json);
    if (!json_object_is_type(root.get(), json_type_object))
        throw std::runtime_error("the state is not a JSON object");
    return root;
}

void merge_into(json_object *target, json_object *patch) {
    json_object_object_foreach(patch, name, value) {
        json_object *old = member(target, name);
        if (!value)
            json_object_object_del(target, name);
        else if (json_object_is_type(value, json_type_object) && json_object_is_type(old, json_type_object))
            merge_into(old, value);
        else
            put(target, name, copy_json(value));
    }
}

} // namespace

State::State(const std::string &json) : tree(parse_object(json)) {}

void State::merge(const std::string &json) {
    merge_into(tree.get(), parse_object(json).get());
}

json_object *State::find(const std::string &pointer) const {
    json_object *value = nullptr;
    if (json_pointer_get(tree.get(), resolve(pointer).c_str(), &value) != 0) return nullptr;
    return value;
}

json_object *State::at(const std::string &pointer) const {
    json_object *value = find(pointer);
    if (!value) throw std::runtime_error("nothing at " + pointer);
    return value;
}

std::string State::text(const std::string &pointer) const {
    json_object *value = find(pointer);
    return value ? json_object_get_string(value) : "";
}

int State::integer(const std::string &pointer) const {
    return json_object_get_int(find(pointer));
}

void State::set(const std::string &pointer, JsonRoot value) {
    json_object *root = tree.get();
    if (pointer.empty() || json_pointer_set(&root, resolve(pointer).c_str(), value.get()) != 0)
        throw std::runtime_error("nothing to set at " + pointer);
    static_cast<void>(value.release()); // the tree's now
}

void State::set(const std::string &pointer, const std::string &value) {
    set(pointer, JsonRoot(json_object_new_string(value.c_str())));
}

void State::set(const std::string &pointer, int value) {
    set(pointer, JsonRoot(json_object_new_int(value)));
}

void State::erase(const std::string &pointer) {
    std::string place = resolve(pointer);
    std::size_t slash = place.rfind('/');
    if (slash == std::string::npos) throw std::runtime_error("nothing to erase at " + pointer);
    json_object *parent = at(place.substr(0, slash));
    std::string last = place.substr(slash + 1);
    if (json_object_is_type(parent, json_type_object)) {
        json_object_object_del(parent, last.c_str());
        return;
    }
    at(place); // an element has a number, then
    json_object_array_del_idx(parent, std::stoul(last), 1);
}

JsonRoot State::view(const std::string &pointer) const {
    JsonRoot copy = copy_json(find(pointer));
    if (!copy) copy = new_object();
    const std::string prefix = pointer + "/";
    for (const Link &link : LINKS) {
        json_object *value = find(link.place);
        if (value && std::string(link.shown).starts_with(prefix))
            put(copy.get(), link.shown + prefix.size(), copy_json(value));
    }
    return copy;
}

} // namespace router
