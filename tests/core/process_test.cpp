// SPDX-License-Identifier: Apache-2.0
#include "core/process.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <sys/wait.h>

#include <gmock/gmock.h>

namespace {

constexpr int PATIENCE = 10000;

struct Said {
    int status;
    std::string text;
};

Said say(const Arguments &arguments, Process::Piped piped = Process::Piped::output, size_t limit = 1 << 20,
         int silence = PATIENCE) {
    Process process(arguments, piped);
    Said said = {};
    said.status = process.read_all(limit, silence, &said.text);
    return said;
}

size_t open_files() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(files), end(files)));
}

TEST(Process, RunsWithoutAShellAndGivesWhatIsPiped) {
    const std::string odd = "$(id); `id` 'a' \"b\" \\ *";
    EXPECT_EQ(say({"printf", "%s", odd}).text, odd);
    const Arguments both = {"sh", "-c", "echo out; echo err >&2; exit 7"};
    EXPECT_EQ(say(both).text, "out\n");
    EXPECT_EQ(say(both, Process::Piped::error).text, "err\n");
    EXPECT_EQ(say(both).status, 7);
    EXPECT_EQ(say({"sh", "-c", "kill -9 $$"}).status, -1);
    EXPECT_EQ(say({"head", "-c", "100000", "/dev/zero"}, Process::Piped::output, 10).text.size(), 10u);
    EXPECT_EQ(run_program({"head", "-c", "1000000", "/dev/zero"}), 0); // more than a pipe holds
    EXPECT_EQ(run_program({"no-such-program"}), -1);
    EXPECT_EQ(Process({"no-such-program"}).error(), ENOENT);
}

TEST(Process, HasItsOwnSignalsAndNothingOfOurs) {
    signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigfillset(&blocked);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    EXPECT_THAT(say({"grep", "SigBlk", "/proc/self/status"}).text, testing::MatchesRegex("SigBlk:\t0+\n"));
    EXPECT_EQ(say({"sh", "-c", "kill -PIPE $$; echo alive"}).text, "");
    const Arguments list_files = {"ls", "/proc/self/fd"};
    const std::string alone = say(list_files).text;
    const Process other({"sleep", "1000"});
    EXPECT_EQ(say(list_files).text, alone);
}

TEST(Process, EndsWithItsOwnerAndLeavesNothing) {
    const size_t files = open_files();
    for (int i = 0; i < 20; i++) {
        const Process sleeping({"sleep", "1000"});
        const Process missing({"no-such-program"});
        EXPECT_FALSE(sleeping.closes_within(0));
    }
    EXPECT_EQ(say({"sleep", "1000"}, Process::Piped::output, 10, 1).status, -1); // says nothing
    EXPECT_TRUE(Process({"true"}).closes_within(PATIENCE));
    EXPECT_EQ(open_files(), files);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

} // namespace
