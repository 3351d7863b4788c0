// SPDX-License-Identifier: Apache-2.0
#include "devices/work_lane.h"

#include <utility>

#include "core/thread.h"

int WorkLane::add(WorkPiece piece, LogSite site) {
    std::lock_guard lock(mutex_);
    if (pieces_.size() >= MOST_WAITING) {
        LOG_AT(site, "%zu pieces of parental control work wait, mac:%s is refused", pieces_.size(),
               piece.mac.c_str());
        return -1;
    }
    pieces_.push_back(std::move(piece));
    if (!running_ && start_detached(body_, nullptr) != 0) {
        pieces_.pop_back();
        LOG_AT(site, "create pthread fail");
        return -1;
    }
    running_ = true;
    return 0;
}

size_t WorkLane::waiting() {
    std::lock_guard lock(mutex_);
    running_ = !pieces_.empty();
    return pieces_.size();
}

void WorkLane::do_first() {
    std::unique_lock lock(mutex_);
    WorkPiece &first = pieces_.front(); // stays where it is while others are added behind it
    lock.unlock();
    first.act();
    lock.lock();
    pieces_.pop_front();
    done_.notify_all();
}

int WorkLane::last_level(const char *mac) {
    std::lock_guard lock(mutex_);
    return level_of(mac);
}

void WorkLane::wait_for(const char *mac) {
    std::unique_lock lock(mutex_);
    done_.wait(lock, [this, mac] { return level_of(mac) == 0; });
}

int WorkLane::level_of(const char *mac) const {
    for (auto piece = pieces_.rbegin(); piece != pieces_.rend(); ++piece)
        if (piece->mac == mac && piece->level != 0) return piece->level;
    return 0;
}
