// SPDX-License-Identifier: Apache-2.0
// One thread for what the SDK does by itself: after each connect the connect-ok hooks and the online
// notification, while the link is up the report slots every few seconds, and at any time the end of calls
// that nobody answers.
#pragma once

#include "calls.h"
#include "link.h"
#include "record.h"

#include <condition_variable>
#include <mutex>

class Housekeeper {
  public:
    Housekeeper(const Record &record, const LinkSettings &settings, Link &link, Calls &calls);

    // False when there is no thread.
    bool start();
    // Any thread.
    void link_up();
    void call_opened();

  private:
    using Clock = Calls::Clock;

    static void *body(void *housekeeper);
    void run();
    void greet();
    void report();
    void expire_calls();

    const Record &record_;
    const Clock::duration period_;
    const bool reports_; // a row has a report slot
    Link &link_;
    Calls &calls_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool woken_ = false;
    bool connected_ = false; // since the last round
};
