// SPDX-License-Identifier: Apache-2.0
// The service calls that have not been answered yet. Any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

// Where an answer goes; no topic: nobody waits for one.
struct ReplyTo {
    std::string topic;
    std::string correlation;
};

class Calls {
  public:
    using Clock = std::chrono::steady_clock;
    struct Id {
        uint32_t handle;
        uint32_t request;
    };

    explicit Calls(std::chrono::seconds limit) : limit_(limit) {}

    // Nothing when too many calls are open.
    std::optional<Id> open(const ReplyTo &reply);
    // Takes the call out of the table: only one caller gets it.
    std::optional<ReplyTo> close(Id id);
    // Takes out the calls whose time is over.
    std::vector<ReplyTo> expire();
    // When the next open call expires; max() when none is open.
    Clock::time_point next_expiry();

  private:
    struct Call {
        uint32_t request;
        Clock::time_point expiry;
        ReplyTo reply;
    };

    const std::chrono::seconds limit_;
    std::mutex mutex_;
    std::map<uint32_t, Call> calls_;
    uint32_t last_handle_ = 0;
    uint32_t last_request_ = 0;
};
