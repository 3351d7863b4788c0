// SPDX-License-Identifier: Apache-2.0
// Lists of any length in requests and states.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

// The text of each number below the count, with a comma between two.
inline std::string listed(size_t count, const std::function<std::string(size_t)> &text) {
    std::string list;
    for (size_t i = 0; i < count; i++)
        list += (i > 0 ? "," : "") + text(i);
    return list;
}
