// SPDX-License-Identifier: Apache-2.0
// The program: its options, its start and its end.
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

#include <sys/wait.h>

#include "sim/router/bus_caller.h"

namespace fs = std::filesystem;

namespace {

// A routersim with these options in the shell's words, serving when it has been made.
class Program {
  public:
    explicit Program(const std::string &options)
        : output(popen(("echo $$; exec " ROUTERSIM " " + options).c_str(), "r")) {
        char line[256] = "";
        EXPECT_EQ(fscanf(output, "%d ", &pid), 1);
        EXPECT_NE(fgets(line, sizeof line, output), nullptr);
        EXPECT_THAT(line, testing::StartsWith("routersim: serving /"));
    }
    // Sends a signal and gives the wait status.
    int end(int number) {
        kill(pid, number);
        return pclose(output);
    }

  private:
    FILE *output;
    int pid = 0;
};

TEST(Program, ServesAHomeAsItsOptionsSay) {
    std::ofstream("/tmp/patch.json") << R"({"vrop.ledswitch":{"status":"dim"}})";
    std::ofstream("/tmp/firmware.img") << "left over";
    Program program("--socket /tmp/bus.sock --state /tmp/patch.json --fault 'result=3 vrop.led* set 1' "
                    R"(--set '/vrop.mesh={"enable":7}')");
    BusCaller client("/tmp/bus.sock");
    EXPECT_EQ(client.call("vrop.ledswitch get"), R"({"vrop.ledswitch":{"status":"dim"}})");
    EXPECT_EQ(client.call("vrop.mesh get"), R"({"vrop.mesh":{"enable":7}})");
    EXPECT_EQ(client.call(R"(vrop.ledswitch set {"status":"off"})"), R"({"result":"3"})");
    EXPECT_EQ(fs::read_symlink("/tmp/firmware.img"), "/aptmp/firmware.img");
    EXPECT_EQ(fs::read_symlink("/tmp/qvtk_upgrade.bin"), "/aptmp/qvtk_upgrade.bin");
    EXPECT_EQ(program.end(SIGTERM), 0);
    EXPECT_FALSE(fs::exists("/tmp/bus.sock"));
}

TEST(Program, LetsTimeGoByAndTakesTheSocketOfOneThatWasKilled) {
    for (int round = 0; round < 2; round++) {
        Program program("");
        BusCaller client;
        const std::string before = client.call("vrop.homewebinfo get");
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        std::string now = before;
        while (now == before && std::chrono::steady_clock::now() < limit)
            now = client.call("vrop.homewebinfo get");
        EXPECT_NE(now, before);
        EXPECT_TRUE(WIFSIGNALED(program.end(SIGKILL)));
    }
}

TEST(Program, RefusesWhatItCannotDo) {
    const std::pair<std::string, int> rows[] = {{"--bogus 1", 2},
                                                {"--socket", 2},
                                                {"--list extra", 2},
                                                {"--state /nowhere", 2},
                                                {"--fault explode", 2},
                                                {"--set none", 2},
                                                {"--set /vrop.none/x=1", 2},
                                                {"--set /vrop.ftinfo/sn={", 2},
                                                {"--socket /proc/bus.sock", 1},
                                                {"--list", 0},
                                                {"--home", 0},
                                                {"--help", 0}};
    for (const auto &[options, status] : rows)
        EXPECT_EQ(WEXITSTATUS(std::system((ROUTERSIM " " + options).c_str())), status) << options;
}

} // namespace
