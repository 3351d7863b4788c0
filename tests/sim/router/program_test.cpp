// SPDX-License-Identifier: Apache-2.0
// The program: its options, its start and its end.
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "sim/router/bus_caller.h"

namespace fs = std::filesystem;

namespace {

class Program {
  public:
    explicit Program(std::vector<std::string> words) : pid(fork()) {
        words.insert(words.begin(), ROUTERSIM);
        std::vector<char *> arguments;
        arguments.reserve(words.size() + 1);
        for (std::string &word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        if (pid == 0) {
            execv(ROUTERSIM, arguments.data());
            _exit(127);
        }
    }
    ~Program() {
        if (pid > 0) end(SIGKILL);
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    // Sends a signal (none for 0) and gives the wait status.
    int end(int number) {
        if (number) kill(pid, number);
        int status = 0;
        waitpid(pid, &status, 0);
        pid = -1;
        return status;
    }

  private:
    pid_t pid;
};

// Waits until a router serves the socket.
bool served(const char *socket) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < limit) {
        if (BusCaller(socket).connected()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

TEST(Program, ServesAHomeAsItsOptionsSay) {
    std::ofstream("/tmp/patch.json") << R"({"vrop.ftinfo":{"model":"TEST"}})";
    std::ofstream("/tmp/firmware.img") << "left over";
    Program program({"--socket", "/tmp/bus.sock", "--state", "/tmp/patch.json", "--set",
                     "/vrop.waninfo/status=\"Unconnected\"", "--fault", "result=3 vrop.led* set 1"});
    ASSERT_TRUE(served("/tmp/bus.sock"));
    BusCaller client("/tmp/bus.sock");
    EXPECT_EQ(client.call_for("vrop.ftinfo", "get", "/vrop.ftinfo/model"), R"("TEST")");
    EXPECT_EQ(client.call_for("vrop.waninfo", "get", "/vrop.waninfo/status"), R"("Unconnected")");
    EXPECT_EQ(client.call("vrop.ledswitch", "set", R"({"status":"off"})"), R"({"result":"3"})");
    EXPECT_EQ(fs::read_symlink("/tmp/firmware.img"), "/aptmp/firmware.img");
    EXPECT_EQ(fs::read_symlink("/tmp/qvtk_upgrade.bin"), "/aptmp/qvtk_upgrade.bin");
    EXPECT_EQ(program.end(SIGTERM), 0);
    EXPECT_FALSE(fs::exists("/tmp/bus.sock"));
}

TEST(Program, LetsTimeGoByAndTakesTheSocketOfOneThatWasKilled) {
    for (int round = 0; round < 2; round++) {
        Program program({});
        ASSERT_TRUE(served(router::DEFAULT_SOCKET));
        BusCaller client;
        const std::string before = client.call_for("vrop.homewebinfo", "get", "/vrop.homewebinfo/uptime");
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        std::string now = before;
        while (now == before && std::chrono::steady_clock::now() < limit)
            now = client.call_for("vrop.homewebinfo", "get", "/vrop.homewebinfo/uptime");
        EXPECT_NE(now, before);
        program.end(SIGKILL);
    }
}

TEST(Program, RefusesWhatItCannotDo) {
    const std::vector<std::string> rows[] = {
        {"--bogus", "1"},
        {"--socket"},
        {"--state", "/nowhere"},
        {"--fault", "explode"},
        {"--set", "/vrop.none/x=1"},
        {"--socket", "/proc/bus.sock"},
    };
    for (const auto &words : rows) {
        SCOPED_TRACE(words[0] + " " + words.back());
        EXPECT_EQ(WEXITSTATUS(Program(words).end(0)), 1);
    }
    for (const char *word : {"--list", "--home", "--help"})
        EXPECT_EQ(Program({word}).end(0), 0) << word;
}

} // namespace
