// SPDX-License-Identifier: Apache-2.0
#include "housekeeper.h"

#include "core/thread.h"

#include <algorithm>
#include <utility>

namespace {

bool any_report(const property_row *row) {
    while (row->name && !row->report)
        row++;
    return row->name != nullptr;
}

} // namespace

Housekeeper::Housekeeper(const Record &record, const LinkSettings &settings, Link &link, Calls &calls)
    : record_(record), period_(std::chrono::seconds(settings.report_seconds)),
      reports_(any_report(record.properties)), link_(link), calls_(calls) {}

bool Housekeeper::start() {
    return start_detached(body, this) == 0;
}

void *Housekeeper::body(void *housekeeper) {
    static_cast<Housekeeper *>(housekeeper)->run();
    return nullptr;
}

void Housekeeper::link_up() {
    std::lock_guard lock(mutex_);
    connected_ = woken_ = true;
    wake_.notify_one();
}

void Housekeeper::call_opened() {
    std::lock_guard lock(mutex_);
    woken_ = true;
    wake_.notify_one();
}

void Housekeeper::run() {
    Clock::time_point next_report = Clock::time_point::max();
    for (;;) {
        std::unique_lock lock(mutex_);
        auto deadline = std::min(next_report, calls_.next_expiry());
        auto woken = [this] { return woken_; };
        // max() is beyond what the wait can be given
        if (deadline == Clock::time_point::max())
            wake_.wait(lock, woken);
        else
            wake_.wait_until(lock, deadline, woken);
        woken_ = false;
        bool connected = std::exchange(connected_, false);
        lock.unlock();

        expire_calls();
        if (connected)
            greet();
        else if (Clock::now() >= next_report)
            report();
        else
            continue;
        next_report = reports_ && link_.up() ? Clock::now() + period_ : Clock::time_point::max();
    }
}

void Housekeeper::greet() {
    for (const property_row *row = record_.properties; row->name; row++)
        if (row->connectok_hook) row->connectok_hook();
    if (record_.other && record_.other->device_online) record_.other->device_online();
}

void Housekeeper::report() {
    for (const property_row *row = record_.properties; row->name; row++)
        if (row->report && link_.up()) row->report();
}

void Housekeeper::expire_calls() {
    for (const ReplyTo &reply : calls_.expire())
        link_.answer(reply, service_refusal(SERVICE_TIMED_OUT, "the device did not answer"));
}
