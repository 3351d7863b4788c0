// SPDX-License-Identifier: Apache-2.0
// Waiting for what nobody tells of.
#pragma once

#include <chrono>
#include <thread>

// Asks until the condition is true; false when the limit passes first.
bool wait_until(const auto &condition, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
