// SPDX-License-Identifier: Apache-2.0
// The connection through restarts of the daemon and of the bus, signals, and several threads.
#include <atomic>
#include <chrono>
#include <csignal>
#include <future>
#include <gmock/gmock.h>
#include <thread>

#include "core/bus.h"
#include "core/json_path.h"
#include "support/moving_clock.h"
#include "support/router_rig.h"

namespace {

using router::Fault;
using testing::Each;
using testing::HasSubstr;

const char OBJECT[] = "vrop.ledswitch";

bool answered() {
    JsonRoot root;
    return get_dev_info(OBJECT, "get", &root) != nullptr;
}

int set_led(const char *status) {
    BusMessage message;
    message.text("status", status);
    return set_dev_info(OBJECT, "set", message);
}

TEST(BusLoss, TheNextCallAfterARestartIsAnsweredAndMadeOnce) {
    RouterRig rig;
    ASSERT_TRUE(answered());
    struct Row {
        const char *name;
        std::function<void()> happens;
    };
    const Row rows[] = {
        {"nothing", [] {}},
        {"the daemon has other ids", [&] { rig.router.restart(false); }},
        {"the bus drops its clients", [&] { rig.router.restart(true); }},
        {"the bus is another process", [&] { rig.router.stop(), rig.router.start(BUS_SOCKET); }},
        {"the connection was closed here", [] { ubus_done(); }},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        rig.router.clear_calls();
        row.happens();
        EXPECT_EQ(set_led("off"), 0);
        EXPECT_EQ(rig.router.calls(OBJECT).size(), 1u);
        EXPECT_TRUE(answered());
    }
}

TEST(BusLoss, WithoutABusCallsFailAtOnceUntilItIsBack) {
    RouterRig rig;
    ASSERT_TRUE(answered());
    rig.router.stop();
    testing::internal::CaptureStdout();
    EXPECT_FALSE(answered());
    EXPECT_EQ(set_led("off"), -1);
    fflush(stdout);
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                HasSubstr("'vrop.ledswitch' 'set' Connection failed\n"));
    rig.router.start(BUS_SOCKET);
    EXPECT_TRUE(answered());
}

TEST(BusLoss, ARequestThatMayHaveBeenCarriedOutIsNotRepeated) {
    RouterRig rig;
    ASSERT_TRUE(answered());
    rig.router.clear_calls();
    rig.router.add_fault({.kind = Fault::Kind::NoReply, .object = OBJECT, .method = "set"});
    std::future<int> result = std::async(std::launch::async, [] { return set_led("off"); });
    ASSERT_TRUE(rig.router.wait_for_calls(1, OBJECT, "set"));
    rig.router.restart(true);
    EXPECT_EQ(result.get(), -1);
    EXPECT_TRUE(answered());
    EXPECT_EQ(rig.router.calls(OBJECT, "set").size(), 1u);
}

TEST(BusLoss, TheDaemonsOwnNotFoundIsAnAnswer) {
    RouterRig rig;
    rig.router.add_fault({.kind = Fault::Kind::Status, .object = OBJECT, .value = 4});
    EXPECT_EQ(set_led("off"), -1);
    EXPECT_EQ(rig.router.calls(OBJECT).size(), 1u);
}

TEST(BusInit, TriesOnceASecondUntilTheBusIsThere) {
    router::Router router;
    size_t tries = 0;
    moving_clock::on_pause([&](moving_clock::Millis) {
        if (++tries == 5) router.start(BUS_SOCKET);
    });
    EXPECT_NE(ubus_init(0), nullptr);
    EXPECT_EQ(moving_clock::pauses().size(), 5u);
    EXPECT_THAT(moving_clock::pauses(), Each(1000));
    EXPECT_TRUE(answered());
    ubus_done();
}

TEST(BusInit, LeavesTheSignalsAsTheyWere) {
    auto ours = [](int) {};
    signal(SIGCHLD, ours);
    RouterRig rig;
    const std::pair<int, sighandler_t> rows[] = {
        {SIGTERM, SIG_DFL}, {SIGINT, SIG_DFL}, {SIGCHLD, ours}, {SIGPIPE, SIG_IGN}};
    for (auto [number, expected] : rows) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        EXPECT_EQ(action.sa_handler, expected) << strsignal(number);
    }
}

TEST(BusInit, TerminationEndsTheProcessAlsoWhileItWaitsForTheBus) {
    EXPECT_EXIT(
        {
            moving_clock::on_pause([](moving_clock::Millis) { raise(SIGTERM); });
            ubus_init(0);
        },
        testing::KilledBySignal(SIGTERM), "");
}

TEST(BusThreads, CallsOfSeveralThreadsDoNotMeet) {
    RouterRig rig;
    std::atomic<int> mixed = 0;
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; number++)
        threads.emplace_back([&, number] {
            const char *object = number % 2 == 0 ? "vrop.ftinfo" : "vrop.waninfo";
            const char *member = number % 2 == 0 ? "iswversion" : "status";
            for (int round = 0; round < 100; round++) {
                JsonRoot root;
                json_object *info = get_dev_info(object, "get", &root);
                mixed += info != nullptr && JsonGetStr(info, member) == nullptr ? 1 : 0;
                set_led(number % 2 == 0 ? "on" : "off");
            }
        });
    std::thread restarts([&] {
        while (!done) {
            rig.router.restart(true);
            rig.router.wait_for_calls(20, "*", "*", std::chrono::seconds(1));
            rig.router.clear_calls();
        }
    });
    for (std::thread &thread : threads)
        thread.join();
    done = true;
    restarts.join();
    EXPECT_EQ(mixed, 0);
    EXPECT_TRUE(answered());
}

} // namespace
