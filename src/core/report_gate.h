// SPDX-License-Identifier: Apache-2.0
// The word that says that a settings request or a long radio service is at work.
#pragma once

#include <atomic>

// 1 while one works. Any thread may read it; it is written by what follows.
extern std::atomic<int> set_flag;

// Raise and lower the flag for a service. One that ends without lowering it leaves it up until another
// service lowers it; a ReportsHeld keeps it up beyond that. Any thread.
void raise_set_flag();
void lower_set_flag();

// Logs set_flag, and when it is up that the report should wait; returns set_flag.
int get_report_status();

// Keeps set_flag up while it lives. Several may live at once, also on several threads: the flag comes down
// with the last, unless a service has raised it.
class ReportsHeld {
  public:
    ReportsHeld();
    ~ReportsHeld();
    ReportsHeld(const ReportsHeld &) = delete;
    ReportsHeld &operator=(const ReportsHeld &) = delete;
};

// The same of a service, which lowers at its end what another one has left up.
struct ServiceHoldsReports {
    ReportsHeld held;
    ~ServiceHoldsReports() { lower_set_flag(); }
};
