// SPDX-License-Identifier: Apache-2.0
#include "object_table.h"

#include <algorithm>

namespace {
constexpr uint32_t FIRST_FREE_ID = 1024;
}

bool BusObject::takes(const std::string &method) const {
    return methods.empty() || std::any_of(methods.begin(), methods.end(),
                                          [&](const UbusMethod &known) { return known.name == method; });
}

uint32_t ObjectTable::free_id() {
    std::uniform_int_distribution<uint32_t> any(FIRST_FREE_ID, UINT32_MAX);
    uint32_t id = any(random_);
    while (by_id(id))
        id = any(random_);
    return id;
}

uint32_t ObjectTable::add(const std::string &path, std::vector<UbusMethod> methods,
                          UbusServer::Handler handler) {
    if (path.empty() || objects_.contains(path)) return 0;
    uint32_t id = free_id();
    objects_[path] = {id, free_id(), path, std::move(methods), std::move(handler)};
    return id;
}

void ObjectTable::renumber() {
    for (auto &[path, object] : objects_)
        object.id = free_id();
}

const BusObject *ObjectTable::by_path(const std::string &path) const {
    auto at = objects_.find(path);
    return at == objects_.end() ? nullptr : &at->second;
}

const BusObject *ObjectTable::by_id(uint32_t id) const {
    auto at = std::find_if(objects_.begin(), objects_.end(),
                           [id](const auto &entry) { return entry.second.id == id; });
    return at == objects_.end() ? nullptr : &at->second;
}

std::vector<const BusObject *> ObjectTable::by_prefix(const std::string &prefix) const {
    std::vector<const BusObject *> found;
    for (auto at = objects_.lower_bound(prefix); at != objects_.end() && at->first.starts_with(prefix); ++at)
        found.push_back(&at->second);
    return found;
}
