// SPDX-License-Identifier: Apache-2.0
#include "core/report_gate.h"

#include <mutex>

#include "core/log.h"

std::atomic<int> set_flag;

namespace {

std::mutex holders_mutex;
int holders;

void change_holders(int by) {
    std::lock_guard lock(holders_mutex);
    holders += by;
    set_flag = holders > 0 ? 1 : 0;
}

} // namespace

ReportsHeld::ReportsHeld() {
    change_holders(1);
}

ReportsHeld::~ReportsHeld() {
    change_holders(-1);
}

int get_report_status() {
    int busy = set_flag;
    LOG("set_flag:%d", busy);
    if (busy != 0) LOG("APP is setting, wait again!");
    return busy;
}
