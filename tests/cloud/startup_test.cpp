// SPDX-License-Identifier: Apache-2.0
// The daemon's main, run to its end or to its long sleep on a moving clock, between a simulated router and a
// recording SDK. Each case runs in a child process, which leaves what it saw in files.
#include <arpa/inet.h>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <sys/socket.h>
#include <thread>

#include "cloud/event_client.h"
#include "core/handles.h"
#include "sim/router/router.h"
#include "support/main_log.h"
#include "support/moving_clock.h"
#include "support/recording_sdk.h"
#include "support/text_file.h"

int agent_main(); // main, renamed

namespace {

using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int ASLEEP = 42; // the status that stands for the sleep without end

struct Case {
    const char *name;
    std::string secret;
    int down_for;      // waits until the WAN comes up
    bool port_taken;   // by another program
    int sdk_result;    // of start_sdk
    int status;        // of the process
    std::string waits; // of the main thread, in seconds
    std::string calls; // of the SDK
    std::string messages;
};

Descriptor take_port() {
    Descriptor taken(socket(AF_INET, SOCK_DGRAM, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(EVENT_PORT);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(taken.get(), reinterpret_cast<sockaddr *>(&address), sizeof address);
    return taken;
}

void write_calls() {
    std::ofstream file("/tmp/calls");
    for (const std::string &line : recording_sdk::lines())
        file << line << ";";
}

// Runs the daemon in this process, which does not come back.
void run_daemon(const Case &row) {
    router::Router router;
    router.set_state("/vrop.qvtkconfig/devicesecret", "\"" + row.secret + "\"");
    router.wan(row.down_for == 0);
    router.start();
    Descriptor taken = row.port_taken ? take_port() : Descriptor();
    recording_sdk::set_start_result(row.sdk_result);
    std::ofstream waits("/tmp/waits");
    int count = 0;
    moving_clock::on_pause([&, main_thread = std::this_thread::get_id()](moving_clock::Millis millis) {
        if (std::this_thread::get_id() != main_thread) return;
        write_calls();
        if (recording_sdk::started_with() != nullptr && millis == 3000) _exit(ASLEEP);
        waits << millis / 1000 << " " << std::flush;
        if (++count == row.down_for) router.wan(true);
    });
    agent_main();
}

// The messages of start-up itself, in order.
std::string start_up_messages() {
    std::string messages;
    for (const std::string &message : log_messages())
        for (const char *known :
             {"devSecret", "network is down", "creat tcp", "start event", "start init", "start sdk"})
            if (message.find(known) != std::string::npos) messages += std::string(known) + ";";
    return messages;
}

std::string repeat(const std::string &text, int times) {
    std::string result;
    while (times-- > 0)
        result += text;
    return result;
}

class StartUp : public testing::TestWithParam<Case> {};

TEST_P(StartUp, TakesItsStepsInOrder) {
    const Case &row = GetParam();
    EXPECT_EXIT(run_daemon(row), ExitedWithCode(row.status), "");
    EXPECT_EQ(text_of("/tmp/waits"), row.waits);
    EXPECT_THAT(text_of("/tmp/calls"), StartsWith(row.calls));
    EXPECT_EQ(start_up_messages(), row.messages);
    EXPECT_THAT(text_of("/apetc/rvxa/ecm.conf"), StartsWith("inmemoryop=0\n"));
}

const char UP_TO_SDK[] = "devSecret;creat tcp;start event;start init;";
const char SDK[] = "set_device_secret(S);start_sdk();";

INSTANTIATE_TEST_SUITE_P(
    Cases, StartUp,
    testing::Values(Case{"Smooth", "S", 0, false, 0, ASLEEP, "", SDK, UP_TO_SDK},
                    Case{"NoNetwork", "S", 14, false, 0, ASLEEP, "3 3 3 3 3 3 5 10 25 45 60 60 60 60 ", SDK,
                         "devSecret;" + repeat("network is down;", 14) + "creat tcp;start event;start init;"},
                    Case{"PortTaken", "S", 0, true, 0, ASLEEP, repeat("2 ", 20), SDK,
                         "devSecret;" + repeat("creat tcp;", 20) + "start init;"},
                    Case{"NoSecret", "", 0, false, 0, 255, "", "", UP_TO_SDK},
                    Case{"SdkRefuses", "S", 0, false, 7, 255, "", "",
                         UP_TO_SDK + std::string("start sdk;start sdk;")}),
    [](const auto &row) { return row.param.name; });

} // namespace
