// SPDX-License-Identifier: Apache-2.0
// What the HTTPS upgrade tries again.
#pragma once

#include <functional>
#include <span>

#include "core/log.h"

struct Retries {
    const char *what;                 // as the lines call it
    std::span<const unsigned> pauses; // seconds, before each retry
    void (*say)(const char *line, LogSite site);
};
// Makes the attempt, and again after each pause until one gives 0. The last result.
int with_retries(const Retries &how, const std::function<int()> &attempt, LogSite site = LogSite::here());
