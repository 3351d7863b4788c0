// SPDX-License-Identifier: Apache-2.0
// The faults that wait for their requests.
#pragma once
#include "cloud.h"
#include <list>
#include <mutex>

namespace cloudsim {

// Any thread.
class FaultQueue {
  public:
    void add(Fault fault);
    void clear();
    // The fault that applies to a request to this endpoint, used up by it; none when all is well.
    std::optional<Fault> take(std::string_view endpoint);

  private:
    mutable std::mutex mutex_;
    std::list<Fault> faults_;
};

} // namespace cloudsim
