// SPDX-License-Identifier: Apache-2.0
// The faults in force.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/router/router.h"

namespace router {

bool glob(const std::string &pattern, const std::string &text);

// What befalls one call.
struct Mishap {
    int delay_millis = 0;
    std::optional<Fault> fault; // never a delay
};

class Faults {
  public:
    void add(const Fault &fault); // throws std::runtime_error when it makes no sense
    void clear() { faults.clear(); }
    bool absent(const std::string &object) const;
    // Counts the call against the faults that hit it.
    Mishap strike(const std::string &object, const std::string &method);

  private:
    std::vector<Fault> faults;
};

// "no_reply", "delay=300", "result=2", "absent", "status=4" or "reply={...}", then the two patterns and the
// count, apart by blanks: "result=2 vrop.wifi.* set 1". Throws std::runtime_error.
Fault parse_fault(const std::string &text);

} // namespace router
