// SPDX-License-Identifier: Apache-2.0
#include "devices/runtime_clock.h"

#include <cinttypes>
#include <optional>

#include "core/clock.h"
#include "core/json_path.h"
#include "core/log.h"
#include "devices/runtime_file.h"

namespace {

constexpr int64_t SLACK = 3; // seconds: readings of whole seconds and small corrections are no new clock

std::optional<int64_t> clock_lead; // of the clock of the day over the monotonic one

// The entries with their timestamps so many seconds later; one that has none counts as now anyway.
JsonRoot moved(json_object *entries, int64_t seconds) {
    for (size_t i = 0; i < json_object_array_length(entries); i++) {
        json_object *entry = json_object_array_get_idx(entries, i);
        if (json_object *taken = nullptr; JsonGetObj(entry, "timestamp", &taken))
            JsonSetInt64(entry, nullptr, "timestamp", entry_timestamp(entry) + seconds);
    }
    return JsonRoot(json_object_get(entries));
}

} // namespace

void follow_clock() {
    const int64_t lead = int64_t{now_seconds()} - monotonic_seconds();
    const int64_t step = lead - clock_lead.value_or(lead);
    if (clock_lead && std::abs(step) <= SLACK) return;
    clock_lead = lead;
    if (step == 0) return;
    LOG("clock is set by %" PRId64 " seconds", step);
    log_replacement(update_runtime_file([step](json_object *entries) { return moved(entries, step); }));
}
