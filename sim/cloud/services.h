// SPDX-License-Identifier: Apache-2.0
// What the endpoints, the run-time control and the public functions share. Every member looks after its own
// locking.
#pragma once
#include "fault.h"
#include "journal.h"
#include "store.h"
#include <atomic>

namespace cloudsim {

// What the server knows and offers. Any thread.
class Catalog {
  public:
    explicit Catalog(std::vector<Device> devices) : devices_(std::move(devices)) {}

    void add(Device device) {
        std::lock_guard lock(mutex_);
        devices_.push_back(std::move(device));
    }
    std::vector<Device> devices() const {
        std::lock_guard lock(mutex_);
        return devices_;
    }
    void offer(std::shared_ptr<const Firmware> firmware) { // null: nothing
        std::lock_guard lock(mutex_);
        firmware_ = std::move(firmware);
    }
    std::shared_ptr<const Firmware> firmware() const {
        std::lock_guard lock(mutex_);
        return firmware_;
    }
    void settings(std::string json) {
        std::lock_guard lock(mutex_);
        settings_ = std::move(json);
    }
    std::string settings() const {
        std::lock_guard lock(mutex_);
        return settings_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<Device> devices_;
    std::shared_ptr<const Firmware> firmware_;
    std::string settings_ = R"({"timeControl":[]})";
};

struct Services {
    explicit Services(const Options &given)
        : options(given), catalog(given.devices), journal(given.log), backups(""), uploads(given.store) {}

    const Options options;
    std::atomic<Scheme> scheme = Scheme::https; // of the addresses handed out
    Catalog catalog;
    FaultQueue faults;
    Journal journal;
    Store backups, uploads;
};

} // namespace cloudsim
