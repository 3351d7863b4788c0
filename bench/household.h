// SPDX-License-Identifier: Apache-2.0
// A router with many client devices, for as long as the object lives. One thread.
#pragma once

#include <array>
#include <string>

namespace bench {

inline constexpr int STATIONS = 128;
inline constexpr int SUPERVISED = 40; // of them, under parental control with rules of every kind

class Household {
  public:
    Household();
    ~Household(); // the router's own devices are back
    Household(const Household &) = delete;
    Household &operator=(const Household &) = delete;

    bool complete() const { return complete_; } // the router has taken it all

  private:
    void put(size_t place, const std::string &json);

    std::array<std::string, 4> home_;
    bool complete_ = true;
};

} // namespace bench
