// SPDX-License-Identifier: Apache-2.0
// What the agent's logs and its console say.
#pragma once

#include <chrono>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

inline constexpr char MAIN_LOG[] = "/apvar/log/qvtk.log";
inline constexpr char UPGRADE_LOG[] = "/apetc/rvxa/qvtk_upgrade.log";

// Has both logs written there.
void set_default_logs();

// A log's text as it stands, empty when there is none.
std::string main_log();
std::string upgrade_log();
// The messages of a log, the main one by default, without time, function and line. A message that ends in a
// line feed is followed by an empty one.
std::vector<std::string> log_messages(const std::string &log = main_log());
// True when the main log has that message; within the limit for the second.
bool has_logged(const std::string &message);
bool wait_for_log(const std::string &message, std::chrono::milliseconds limit = std::chrono::seconds(10));
void clear_main_log();

// What the action prints.
std::string console_of(const auto &action) {
    testing::internal::CaptureStdout();
    action();
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}
