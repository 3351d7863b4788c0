// SPDX-License-Identifier: Apache-2.0
// The connection through restarts of the daemon and of the bus, signals, and several threads.
#include <csignal>
#include <filesystem>
#include <future>
#include <gmock/gmock.h>
#include <semaphore>
#include <thread>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/time_limit.h"
#include "platform/ubus/scripted_peer.h"
#include "support/moving_clock.h"
#include "support/router_rig.h"
#include "support/text_file.h"

// The limits that were set, in milliseconds and in order: the agent's own, and what it gave the bus
// library, both under ubus_mutex. The one for sending is over soon.
static std::vector<long> limits;

extern "C" {
int __real_timer_settime(timer_t timer, int flags, const itimerspec *time, itimerspec *old);
int __real_ubus_invoke_fd(ubus_context *bus, uint32_t object, const char *method, blob_attr *message,
                          ubus_data_handler_t take, void *priv, int timeout, int fd);

int __wrap_timer_settime(timer_t timer, int flags, const itimerspec *time, itimerspec *old) {
    const long millis = time->it_value.tv_sec * 1000 + time->it_value.tv_nsec / 1000000;
    if (millis != 0) limits.push_back(millis);
    const itimerspec soon = {{1, 0}, {0, 100000000}};
    return __real_timer_settime(timer, flags, millis == BUS_SEND_MILLIS ? &soon : time, old);
}

int __wrap_ubus_invoke_fd(ubus_context *bus, uint32_t object, const char *method, blob_attr *message,
                          ubus_data_handler_t take, void *priv, int timeout, int fd) {
    limits.push_back(timeout);
    return __real_ubus_invoke_fd(bus, object, method, message, take, priv, timeout, fd);
}
}

namespace {

using router::Fault;

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

bool is_asleep(pid_t thread) {
    const std::string stat = text_of(("/proc/self/task/" + std::to_string(thread) + "/stat").c_str());
    return stat.find(") S ") != std::string::npos;
}

TEST(BusLoss, TheNextCallAfterARestartIsAnsweredAndMadeOnce) {
    RouterRig rig;
    ASSERT_TRUE(answered());
    const std::pair<const char *, std::function<void()>> rows[] = {
        {"nothing", [] {}},
        {"the daemon has other ids", [&] { rig.router.restart(false); }},
        {"the bus drops its clients", [&] { rig.router.restart(true); }},
        {"the bus is another process", [&] { rig.router.stop(), rig.router.start(BUS_SOCKET); }},
        {"the connection was closed here", [] { ubus_done(); }},
    };
    for (const auto &[name, happens] : rows) {
        SCOPED_TRACE(name);
        rig.router.clear_calls();
        happens();
        EXPECT_EQ(set_led("off"), 0);
        EXPECT_EQ(rig.router.calls(OBJECT).size(), 1u);
        EXPECT_TRUE(answered());
    }
}

TEST(BusLoss, WithoutABusCallsFailAtOnceUntilItIsBack) {
    RouterRig rig;
    ASSERT_TRUE(answered());
    rig.router.stop();
    EXPECT_FALSE(answered());
    EXPECT_THAT(console_of([] { EXPECT_EQ(set_led("off"), -1); }),
                testing::HasSubstr("'vrop.ledswitch' 'set' Connection failed\n"));
    rig.router.start(BUS_SOCKET);
    EXPECT_TRUE(answered());
}

TEST(BusLoss, ARequestThatMayHaveBeenCarriedOutIsNotRepeated) {
    RouterRig rig;
    rig.router.add_fault({.kind = Fault::Kind::NoReply, .object = OBJECT, .method = "set"});
    std::future<int> result = std::async(std::launch::async, [] { return set_led("off"); });
    ASSERT_TRUE(rig.router.wait_for_calls(1, OBJECT, "set"));
    rig.router.restart(true);
    EXPECT_EQ(result.get(), -1);
    EXPECT_TRUE(answered());
    EXPECT_EQ(rig.router.calls(OBJECT, "set").size(), 1u);
}

TEST(BusInit, TriesOnceASecondUntilTheBusIsThere) {
    router::Router router;
    moving_clock::on_pause([&](moving_clock::Millis) {
        if (moving_clock::pauses().size() == 5) router.start(BUS_SOCKET);
    });
    EXPECT_NE(ubus_init(0), nullptr);
    EXPECT_EQ(moving_clock::pauses(), std::vector<moving_clock::Millis>(5, 1000));
    EXPECT_TRUE(answered());
    ubus_done();
}

TEST(BusInit, LeavesTheSignalsAsTheyWere) {
    auto ours = [](int) {};
    signal(SIGCHLD, ours);
    RouterRig rig;
    EXPECT_EQ(signal(SIGTERM, SIG_DFL), SIG_DFL);
    EXPECT_EQ(signal(SIGINT, SIG_DFL), SIG_DFL);
    EXPECT_EQ(signal(SIGCHLD, SIG_DFL), ours);
    EXPECT_EQ(signal(SIGPIPE, SIG_DFL), SIG_IGN);
}

TEST(BusInit, TerminationEndsTheProcessAlsoWhileItWaitsForTheBus) {
    moving_clock::on_pause([](moving_clock::Millis) { raise(SIGTERM); });
    EXPECT_EXIT(ubus_init(0), testing::KilledBySignal(SIGTERM), "");
}

TEST(BusInit, WaitsForADaemonThatComesLaterButNotForOneOfItsObjects) {
    RouterRig rig;
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "vrop.qvtkconfig"});
    ubus_wait_daemon();
    EXPECT_TRUE(moving_clock::pauses().empty());
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "vrop*"});
    moving_clock::on_pause([&](moving_clock::Millis) {
        if (moving_clock::pauses().size() == 1) rig.router.stop();
        if (moving_clock::pauses().size() == 2) rig.router.start(BUS_SOCKET);
        if (moving_clock::pauses().size() == 3) rig.router.clear_faults();
    });
    ubus_wait_daemon();
    moving_clock::on_pause({});
    EXPECT_EQ(moving_clock::pauses(), std::vector<moving_clock::Millis>(4, 1000));
}

// A broker that greets, at best, and then stays silent.
TEST(BusLimit, EndsWhatTheLibraryWouldWaitForForEver) {
    ScriptedPeer peer([](const Wire &wire) { wire.drain(); });
    Client client(BUS_PATH);
    const int socket = client.context->sock.fd;
    uint32_t id = 0;
    {
        TimeLimit limit(-1, 20);
        char byte = 0;
        EXPECT_EQ(read(unix_stream(BUS_PATH, connect).get(), &byte, 1), -1) << "interrupted";
        EXPECT_EQ(ubus_connect(BUS_PATH), nullptr);
    }
    {
        TimeLimit limit(socket, 20);
        EXPECT_EQ(client.look_up("vrop", &id), UBUS_STATUS_CONNECTION_FAILED);
        EXPECT_TRUE(TimeLimit::over());
    }
    TimeLimit unused(socket, 20000);
    EXPECT_FALSE(TimeLimit::over());
}

TEST(BusLimit, EndsACallThatTheBusDoesNotTakeAndDoesNotRepeatIt) {
    std::binary_semaphore done(0);
    ScriptedPeer peer([&](const Wire &wire) {
        wire.receive_message();
        wire.send(captured::LOOKUP_DATA + captured::LOOKUP_STATUS);
        done.acquire(); // reads no more
    });
    std::filesystem::create_symlink(BUS_PATH, BUS_SOCKET);
    limits.clear();
    EXPECT_EQ(set_led(std::string(512 * 1024, 'x').c_str()), -1);
    EXPECT_EQ(limits, (std::vector<long>{BUS_CONNECT_MILLIS, BUS_LOOKUP_MILLIS, BUS_SEND_MILLIS,
                                         BUS_TIMEOUT_MILLIS}));
    done.release();
}

TEST(FairMutex, GoesToWhoWaitsLongest) {
    FairMutex mutex;
    std::atomic<pid_t> ids[3] = {};
    std::vector<int> order;
    {
        std::vector<std::jthread> threads;
        std::unique_lock lock(mutex);
        for (int i = 0; i < 3; i++) {
            threads.emplace_back([&, i] {
                ids[i] = gettid();
                std::lock_guard turn(mutex);
                order.push_back(i);
            });
            while (ids[i] == 0 || !is_asleep(ids[i]))
                std::this_thread::yield();
        }
        lock.unlock();
        lock.lock();
        order.push_back(3);
    }
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

TEST(BusThreads, CallsOfSeveralThreadsDoNotMeet) {
    RouterRig rig;
    std::atomic<int> count = 0;
    auto calls = [&](const char *object, const char *member, const char *led) {
        for (int round = 0; round < 100; round++) {
            JsonRoot root;
            json_object *info = get_dev_info(object, "get", &root);
            EXPECT_TRUE(info == nullptr || JsonGetStr(info, member) != nullptr) << object;
            count += info != nullptr;
            set_led(led);
        }
    };
    {
        std::jthread restarts([&](const std::stop_token &done) {
            while (!done.stop_requested()) {
                rig.router.restart(true);
                rig.router.wait_for_calls(20, "*", "*", std::chrono::seconds(1));
                rig.router.clear_calls();
            }
        });
        std::vector<std::jthread> threads; // end before the restarts
        for (int i = 0; i < 2; i++) {
            threads.emplace_back(calls, "vrop.ftinfo", "iswversion", "on");
            threads.emplace_back(calls, "vrop.waninfo", "status", "off");
        }
    }
    EXPECT_GT(count, 0);
    EXPECT_TRUE(answered());
}

} // namespace
