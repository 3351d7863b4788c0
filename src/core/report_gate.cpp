// SPDX-License-Identifier: Apache-2.0
#include "core/report_gate.h"

#include <mutex>
#include <optional>

#include "core/log.h"

std::atomic<int> set_flag;

namespace {

std::mutex gate_mutex;
int holders;
bool raised;

void change_gate(int holders_more, std::optional<bool> raise) {
    std::lock_guard lock(gate_mutex);
    holders += holders_more;
    raised = raise.value_or(raised);
    set_flag = holders > 0 || raised ? 1 : 0;
}

} // namespace

void raise_set_flag() {
    change_gate(0, true);
}

void lower_set_flag() {
    change_gate(0, false);
}

ReportsHeld::ReportsHeld() {
    change_gate(1, {});
}

ReportsHeld::~ReportsHeld() {
    change_gate(-1, {});
}

int get_report_status() {
    int busy = set_flag;
    LOG("set_flag:%d", busy);
    if (busy != 0) LOG("APP is setting, wait again!");
    return busy;
}
