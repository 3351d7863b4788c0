// SPDX-License-Identifier: Apache-2.0
// The word that says that a settings request or a long radio service is at work.
#pragma once

#include <atomic>

// 1 while one works. Any thread.
extern std::atomic<int> set_flag;

// Logs set_flag, and when it is up that the report should wait; returns set_flag.
int get_report_status();

// Keeps set_flag up while it lives. Several may live at once, also on several threads: the flag comes down
// with the last.
class ReportsHeld {
  public:
    ReportsHeld();
    ~ReportsHeld();
    ReportsHeld(const ReportsHeld &) = delete;
    ReportsHeld &operator=(const ReportsHeld &) = delete;
};
