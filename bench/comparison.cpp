// SPDX-License-Identifier: Apache-2.0
#include "comparison.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace bench {

namespace {

double median(std::vector<double> *samples) {
    if (samples->empty()) return 0;
    const auto middle = samples->begin() + static_cast<std::ptrdiff_t>(samples->size() / 2);
    std::nth_element(samples->begin(), middle, samples->end());
    return *middle;
}

// The work of one side and the seconds that its turns took.
class Side {
  public:
    explicit Side(const Prepared &work) : work_(work) {}

    bool take_turn() {
        if (!work_.prepare()) return false;
        const auto before = std::chrono::steady_clock::now();
        const bool good = work_.run();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - before;
        seconds_.push_back(taken.count());
        return good;
    }
    double last() const { return seconds_.back(); }
    double typical() { return median(&seconds_); }

  private:
    const Prepared &work_;
    std::vector<double> seconds_;
};

} // namespace

void compare(benchmark::State &state, const Comparison &comparison, const Prepared &measured,
             const Prepared &bare) {
    Side agent(measured);
    Side floor(bare);
    bool agent_first = false;
    for (auto turn : state) {
        static_cast<void>(turn);
        agent_first = !agent_first; // what the one leaves in the caches is not always the other's gain
        const bool good =
            agent_first ? agent.take_turn() && floor.take_turn() : floor.take_turn() && agent.take_turn();
        if (!good) {
            state.SkipWithError("a turn failed");
            return;
        }
        state.SetIterationTime(agent.last());
    }
    const double agent_time = agent.typical();
    const double bare_time = floor.typical();
    state.counters["measured"] = agent_time;
    state.counters["bare"] = bare_time;
    state.counters["ratio"] = bare_time > 0 ? agent_time / bare_time : 0;
    state.counters["amount"] = comparison.amount;
    state.counters["goal"] = comparison.goal;
    state.SetLabel(std::string(comparison.unit) + " " + comparison.with);
}

void compare(benchmark::State &state, const Comparison &comparison, const Turn &measured, const Turn &bare) {
    const Turn nothing = [] { return true; };
    compare(state, comparison, Prepared{nothing, measured}, Prepared{nothing, bare});
}

} // namespace bench
