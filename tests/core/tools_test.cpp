// SPDX-License-Identifier: Apache-2.0
// The small tools: texts, files, commands, threads, the storage file.
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

#include "core/command.h"
#include "core/files.h"
#include "core/handles.h"
#include "core/signals.h"
#include "core/storage_file.h"
#include "core/text.h"
#include "support/main_log.h"
#include "support/other_user.h"
#include "support/text_file.h"
#include "support/wait_until.h"

namespace {

using testing::ElementsAre;

TEST(Text, MacAddresses) {
    const struct {
        const char *digits;
        int size;
        const char *colon; // as much as fits, then its end, then nothing more
    } rows[] = {
        {"a1b2c3d4e5f6", 64, "A1:B2:C3:D4:E5:F6"},
        {"a1b2xxd4e5f6", 64, "A1:B2:00:00:00:00"},
        {"", 64, "00:00:00:00:00:00"},
        {"-1b2", 64, "FF:B2:00:00:00:00"},
        {"a1b2c3d4e5f6", 2, ""},
        {"a1b2c3d4e5f6", 3, "A"},
        {"a1b2c3d4e5f6", 18, "A1:B2:C3:D4:E5:F"},
        {"a1b2c3d4e5f6", 19, "A1:B2:C3:D4:E5:F6"},
    };
    for (const auto &row : rows) {
        std::string text(64, '#'), expected = row.colon + std::string(1, '\0');
        EXPECT_EQ(set_colon_mac(row.digits, text.data(), row.size), 17);
        EXPECT_EQ(text, expected.append(64 - expected.size(), '#')) << row.digits << " " << row.size;
    }
    EXPECT_STREQ(mac_lower_hex("A1B2xxD4E5F6").text, "a1b200000000");
    char text[8];
    EXPECT_EQ(set_colon_mac(nullptr, text, 8), -1);
    EXPECT_EQ(set_colon_mac("a1", nullptr, 8), -1);
    EXPECT_EQ(set_colon_mac("a1", text, 1), -1);
}

TEST(Text, TrailingBlanksAndCapitals) {
    for (auto [text, stripped] : {std::pair{std::string(" a b\v \t\r\n"), " a b\v"}, {" \t", ""}, {"", ""}}) {
        util_strip_blank_of_string_end(text.data());
        EXPECT_STREQ(text.c_str(), stripped);
    }
    char mixed[] = "az\xc3\xa4:09{`";
    lowercasestr_capitalstr(mixed);
    EXPECT_STREQ(mixed, "AZ\xc3\xa4:09{`");
    util_strip_blank_of_string_end(nullptr);
    lowercasestr_capitalstr(nullptr);
}

TEST(Files, AreReadUpToTheLimit) {
    std::ofstream("/tmp/file") << std::string(10000, 'x');
    std::string content;
    for (size_t limit : {0u, 1u, 4096u, 9999u, 10000u, 20000u}) {
        EXPECT_TRUE(read_file("/tmp/file", limit, &content));
        EXPECT_EQ(content.size(), std::min<size_t>(limit, 10000));
    }
    content = "kept";
    EXPECT_FALSE(read_file("/tmp/none", 10, &content));
    EXPECT_FALSE(read_file("/tmp", 10, &content));
    EXPECT_EQ(content, "kept");
}

TEST(Files, AreReplacedWholeOrNotAtAll) {
    std::ofstream("/tmp/file") << "old";
    std::ofstream("/tmp/file.bak") << "left over by a crash, and longer";
    chmod("/tmp/file.bak", 0600);
    EXPECT_TRUE(replace_file("/tmp/file", "new", 0666));
    EXPECT_EQ(text_of("/tmp/file"), "new");
    EXPECT_EQ(std::filesystem::status("/tmp/file").permissions(), std::filesystem::perms{0666});
    std::filesystem::create_directories("/tmp/directory/inside");
    EXPECT_FALSE(replace_file("/tmp/directory", "x", 0600));
    EXPECT_FALSE(replace_file("/tmp/none/file", "x", 0600));
    for (const char *left : {"/tmp/file.bak", "/tmp/directory.bak"})
        EXPECT_FALSE(std::filesystem::exists(left));
    EXPECT_FALSE(write_all(Descriptor(open("/dev/full", O_WRONLY)).get(), "x", 1));
}

// Names in a folder that others write to, each with what stands there already.
TEST(Files, OfOthersAreNeitherWrittenToNorRead) {
    const auto link = [](const char *path) { std::filesystem::create_symlink("/tmp/target", path); };
    const auto fifo = [](const char *path) { mkfifo(path, 0666); };
    const auto file = [](const char *path) { std::ofstream(path) << "content"; };
    const struct {
        const char *name;
        std::function<void(const char *)> make;
        bool is_read, is_foreign;
    } rows[] = {
        {"own file", file, true, false},        {"file of another", file, false, true},
        {"own link", link, true, false},        {"link of another", link, false, true},
        {"FIFO", fifo, false, false},           {"FIFO of another", fifo, false, true},
        {"nothing", [](auto) {}, false, false},
    };
    const bool others = can_give_files_away();
    for (const auto &row : rows) {
        if (row.is_foreign && !others) continue;
        SCOPED_TRACE(row.name);
        const auto make = [&row](const char *path) {
            row.make(path);
            EXPECT_TRUE(!row.is_foreign || lchown(path, SOMEBODY, SOMEBODY) == 0);
        };
        std::ofstream("/tmp/target") << "content";
        std::filesystem::remove("/tmp/name");
        make("/tmp/name");
        std::string content = "kept";
        EXPECT_EQ(read_own_file("/tmp/name", 100, &content), row.is_read);
        EXPECT_EQ(content, row.is_read ? "content" : "kept");
        for (const char *path : {"/tmp/name", "/tmp/other.bak"}) {
            std::filesystem::remove(path);
            make(path);
        }
        const Descriptor made = create_private_file("/tmp/name");
        EXPECT_TRUE(made && write_all(made.get(), "new", 3));
        EXPECT_EQ(text_of("/tmp/name"), "new");
        EXPECT_EQ(std::filesystem::status("/tmp/name").permissions(), std::filesystem::perms{0600});
        EXPECT_TRUE(replace_file("/tmp/other", "new", 0644));
        EXPECT_EQ(text_of("/tmp/other"), "new");
        EXPECT_EQ(text_of("/tmp/target"), "content");
    }
    std::filesystem::create_directory("/tmp/directory");
    EXPECT_FALSE(create_private_file("/tmp/directory"));
    EXPECT_FALSE(open_own_file("/tmp/directory"));
}

TEST(Command, Results) {
    set_default_logs();
    signal(SIGPIPE, SIG_IGN); // the agent's, not its commands'
    const struct {
        const char *command;
        int result, exit_code, extended;
    } rows[] = {{"true", 0, 0, 0},          {"exit 3", 0, 3, -1},          {"/none", 0, 127, -1},
                {"kill -9 $$", -1, 77, -1}, {"kill -PIPE $$", -1, 77, -1}, {nullptr, -1, 77, -1}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.command == nullptr ? "null" : row.command);
        for (auto run : {run_cmd, rvxa_run_cmd}) {
            int exit_code = 77;
            EXPECT_EQ(run(&exit_code, row.command), row.result);
            EXPECT_EQ(exit_code, row.exit_code);
        }
        EXPECT_EQ(run_cmd_ext(row.command), row.extended);
    }
    clear_main_log();
    EXPECT_EQ(rvxa_run_cmd_ext("exit 3"), -1);
    EXPECT_EQ(rvxa_run_cmd_ext("kill -9 $$"), -1);
    EXPECT_EQ(run_cmd_ext("kill -9 $$"), -1);
    EXPECT_THAT(log_messages(),
                ElementsAre("cmd:exit 3", "status:768", "ec:3 cmd:exit 3", "cmd:kill -9 $$", "status:9",
                            "Child process is signaled", "Child process is signaled"));
}

// With what it has started, and without holding back who runs another at the same time.
TEST(Command, ThatHangsIsKilledWholly) {
    int hold[2];
    ASSERT_EQ(pipe(hold), 0);
    ASSERT_EQ(mkfifo("/tmp/fifo", 0600), 0);
    std::jthread other([] { EXPECT_EQ(shell_status("read line </tmp/fifo", COMMAND_LIMIT_MILLIS), 0); });
    const int status = shell_status("trap '' TERM; sleep 1000 & sleep 1000; true", 50);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    std::ofstream("/tmp/fifo") << "the other goes on\n";
    EXPECT_EQ(close(hold[1]), 0);
    char byte = 0;
    EXPECT_EQ(read(hold[0], &byte, 1), 0) << "somebody still has the other end";
    close(hold[0]);
}

TEST(StorageFile, NumbersAreBoundedByTheirLine) {
    const std::pair<const char *, int> rows[] = {
        {"a=12\n", 12}, {"b=1\na= -3", -3}, {"a=4294967296", INT_MAX}, {"a=\n5", 7}, {"a=x", 7}, {"ba=1", 7}};
    for (const auto &[text, number] : rows)
        EXPECT_EQ(storage_number(text, "a", 7), number) << text;
}

TEST(StorageFile, IsMadeOnceAndLeftAlone) {
    set_default_logs();
    const std::string path = "/apetc/rvxa/ecm.conf";
    EXPECT_EQ(ecm_init(), 0);
    EXPECT_EQ(text_of(path), "inmemoryop=0\noutmemoryop=0\nsamba=0\nhcdn_enable=1\nhcdn_open=0\nisusb=1");
    std::ofstream(path) << "";
    EXPECT_EQ(ecm_init(), 0);
    EXPECT_EQ(text_of(path), "");
    std::filesystem::remove_all("/apetc/rvxa");
    EXPECT_EQ(ecm_init(), -1);
    const std::string exists = "file:" + path + " is exist";
    EXPECT_THAT(log_messages(), ElementsAre("end", exists, exists, "", "open file:" + path + " fail"));
}

TEST(Signals, InterruptClearsTheRunFlagAndTheProcessGoesOn) {
    set_default_logs();
    ASSERT_EQ(install_sig_exit(), 0);
    ASSERT_EQ(runflag, 1);
    EXPECT_EQ(run_cmd_ext("kill -INT $PPID"), 0); // also while a command runs
    EXPECT_TRUE(wait_until([] { return runflag == 0; }));
    EXPECT_THAT(log_messages(), ElementsAre("destroy ubus_mutex"));
}

TEST(Signals, EndedChildrenAreReaped) {
    set_default_logs();
    pid_t child = fork();
    if (child == 0) _exit(0);
    siginfo_t ended = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    sig_handle(SIGUSR1);
    sig_handle(SIGCHLD);
    EXPECT_EQ(waitpid(child, nullptr, 0), -1);
    EXPECT_THAT(log_messages(), ElementsAre("handle child exit!", "child(-1) had exit!"));
}

} // namespace
