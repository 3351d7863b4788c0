// SPDX-License-Identifier: Apache-2.0
#include "core/report_gate.h"

#include "core/log.h"

std::atomic<int> set_flag;

int get_report_status() {
    int busy = set_flag;
    LOG("set_flag:%d", busy);
    if (busy != 0) LOG("APP is setting, wait again!");
    return busy;
}
