// SPDX-License-Identifier: Apache-2.0
// The functions of the cloud SDK, doing nothing but remember how they were called. Link test_sdk instead of
// the SDK. Any thread.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "tebra_sdk.h"

namespace recording_sdk {

struct Call {
    std::string function;
    std::vector<std::string> arguments; // texts as they are (null: "(null)"), numbers in decimal

    // function(argument, argument)
    std::string line() const;
};

// All calls in order but get_connect_state, which everybody asks.
std::vector<Call> calls();
// The calls of one function.
std::vector<Call> calls_of(const std::string &function);
// All as lines.
std::vector<std::string> lines();
void clear_calls();
// Waits until a function has been called that often since the calls were cleared; false when the limit passes
// first.
bool wait_for(const std::string &function, size_t count = 1,
              std::chrono::milliseconds limit = std::chrono::seconds(10));

// What get_connect_state gives (at first 1).
void set_connect_state(int state);
// Called before each post of a property is recorded, on the posting thread. Empty for none.
void on_post(std::function<void()> hook);
// The record that start_sdk was called with, null before.
struct global_config *started_with();

} // namespace recording_sdk
