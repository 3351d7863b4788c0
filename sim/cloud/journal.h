// SPDX-License-Identifier: Apache-2.0
// The requests that came, kept for tests and logged for people.
#pragma once
#include "cloud.h"
#include <mutex>

namespace cloudsim {

// One JSON text with "time", "method", "path", "sn", "verdict", "status", "fault" and "body"; a body that is
// no text is told by its size.
std::string to_line(const Request &request);

// Any thread.
class Journal {
  public:
    explicit Journal(std::function<void(const std::string &)> log);

    void add(Request request);
    std::vector<Request> all() const;
    void clear();

  private:
    std::function<void(const std::string &)> log_;
    mutable std::mutex mutex_;
    std::vector<Request> requests_;
};

} // namespace cloudsim
