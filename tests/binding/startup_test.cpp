// SPDX-License-Identifier: Apache-2.0
// The daemon's main, run to its long sleep on a moving clock, between a simulated router and a recording SDK.
// It runs in a child process, which leaves what it saw in files.
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <thread>

#include "sim/router/router.h"
#include "support/event_catcher.h"
#include "support/main_log.h"
#include "support/moving_clock.h"
#include "support/recording_sdk.h"
#include "support/text_file.h"

int agent_main(int argc, char **argv); // main, renamed

namespace {

using testing::StartsWith;

constexpr int ASLEEP = 42;   // the status that stands for the sleep without end
constexpr int DOWN_FOR = 14; // waits until the WAN comes up

// Runs the daemon in this process, which does not come back; another program holds the relay's port.
void run_daemon() {
    router::Router router(R"({"vrop.qvtkconfig":{"devicesecret":"S"}})");
    router.wan(false);
    router.start();
    Descriptor taken = take_event_port();
    std::ofstream waits("/tmp/waits");
    int count = 0;
    moving_clock::on_pause([&, main_thread = std::this_thread::get_id()](moving_clock::Millis millis) {
        if (std::this_thread::get_id() != main_thread) return;
        if (recording_sdk::started_with() != nullptr) {
            std::ofstream("/tmp/calls") << testing::PrintToString(recording_sdk::lines());
            _exit(ASLEEP);
        }
        waits << millis / 1000 << " " << std::flush;
        if (++count == DOWN_FOR) router.wan(true);
    });
    char name[] = "qvtkd";
    char *words[] = {name, nullptr};
    agent_main(1, words);
}

TEST(StartUp, WaitsForTheNetworkAndTriesThePortTwentyTimes) {
    EXPECT_EXIT(run_daemon(), testing::ExitedWithCode(ASLEEP), "");
    std::string retries;
    for (int i = 0; i < 20; i++)
        retries += "2 ";
    EXPECT_EQ(text_of("/tmp/waits"), "3 3 3 3 3 3 5 10 25 45 60 60 60 60 " + retries);
    EXPECT_THAT(text_of("/tmp/calls"), StartsWith("{ \"set_device_secret(S)\", \"start_sdk()\""));
    EXPECT_THAT(text_of("/apetc/rvxa/ecm.conf"), StartsWith("inmemoryop=0\n"));
}

} // namespace
