// SPDX-License-Identifier: Apache-2.0
#include "calls.h"

#include <algorithm>
#include <utility>

namespace {
constexpr size_t MAX_OPEN = 256;
} // namespace

std::optional<Calls::Id> Calls::open(const ReplyTo &reply) {
    std::lock_guard lock(mutex_);
    if (calls_.size() >= MAX_OPEN) return std::nullopt;
    do
        last_handle_++;
    while (last_handle_ == 0 || calls_.contains(last_handle_));
    last_request_++;
    calls_[last_handle_] = {last_request_, Clock::now() + limit_, reply};
    return Id{last_handle_, last_request_};
}

std::optional<ReplyTo> Calls::close(Id id) {
    std::lock_guard lock(mutex_);
    auto call = calls_.find(id.handle);
    if (call == calls_.end() || call->second.request != id.request) return std::nullopt;
    ReplyTo reply = std::move(call->second.reply);
    calls_.erase(call);
    return reply;
}

std::vector<ReplyTo> Calls::expire() {
    std::lock_guard lock(mutex_);
    std::vector<ReplyTo> expired;
    Clock::time_point now = Clock::now();
    std::erase_if(calls_, [&](auto &entry) {
        bool over = entry.second.expiry <= now;
        if (over) expired.push_back(std::move(entry.second.reply));
        return over;
    });
    return expired;
}

Calls::Clock::time_point Calls::next_expiry() {
    std::lock_guard lock(mutex_);
    Clock::time_point next = Clock::time_point::max();
    for (const auto &[handle, call] : calls_)
        next = std::min(next, call.expiry);
    return next;
}
