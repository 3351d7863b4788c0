// SPDX-License-Identifier: Apache-2.0
// Rates as the daemon writes them.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "core/text.h"

// A text of Mbit/s, of which 31 characters count, in bytes per second; 0 for what is no number, the nearest
// that 32 bits can hold for what they cannot.
inline int32_t bytes_per_second(const char *rate) {
    const auto digits = format_text<32>("%s", rate);
    const double value = strtod(digits.text, nullptr) * 1024 * 1024 * 0.125;
    if (std::isnan(value)) return 0;
    return static_cast<int32_t>(std::fmin(std::fmax(value, INT32_MIN), INT32_MAX));
}
