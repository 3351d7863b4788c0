// SPDX-License-Identifier: Apache-2.0
// The published objects: found by path, by pattern or by id.
#pragma once

#include <map>
#include <random>

#include "ubus_server.h"

struct BusObject {
    uint32_t id;
    uint32_t type_id;
    std::string path;
    std::vector<UbusMethod> methods;
    UbusServer::Handler handler;

    bool takes(const std::string &method) const;
};

class ObjectTable {
  public:
    uint32_t add(const std::string &path, std::vector<UbusMethod> methods, UbusServer::Handler handler);
    bool remove(const std::string &path) { return objects_.erase(path) > 0; }
    void renumber();
    // A number that no object has; ids below 1024 are the broker's own.
    uint32_t free_id();

    const BusObject *by_path(const std::string &path) const;
    const BusObject *by_id(uint32_t id) const;
    // Those whose path begins so, sorted bytewise.
    std::vector<const BusObject *> by_prefix(const std::string &prefix) const;

  private:
    std::map<std::string, BusObject> objects_;
    std::mt19937 random_{std::random_device{}()};
};
