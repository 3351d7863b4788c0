// SPDX-License-Identifier: Apache-2.0
// A cloud SDK that is online and does nothing, so that only the agent's own work is timed. It counts the
// events that it is handed, since a relay that is measured ends by them.
#include "quiet_sdk.h"

#include "tebra_sdk.h"

namespace bench {

namespace {

long events_wanted;
std::atomic<int> *flag_to_clear;

void count_event() {
    if (events_wanted > 0 && --events_wanted == 0) *flag_to_clear = 0;
}

} // namespace

void clear_after_events(long events, std::atomic<int> *flag) {
    events_wanted = events;
    flag_to_clear = flag;
}

} // namespace bench

extern "C" {

int set_device_secret(const char *) {
    return 0;
}

int start_sdk(struct global_config *) {
    return 0;
}

int get_connect_state(void) {
    return 1;
}

int update_checkTime(int, int, int) {
    return 0;
}

int TEBRA_SDK_PostProperty(const char *) {
    return 0;
}

int TEBRA_SDK_PostEvent(const char *, const char *) {
    bench::count_event();
    return 0;
}

int TEBRA_SDK_PostUpgress(int) {
    bench::count_event();
    return 0;
}

int TEBRA_SDK_Handle_Response(uint32_t, uint32_t, int, const char *, const char *) {
    return 0;
}
}
