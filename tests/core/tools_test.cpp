// SPDX-License-Identifier: Apache-2.0
// The small tools: texts, files, commands, threads, the storage file, the report gate.
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>

#include "core/command.h"
#include "core/device.h"
#include "core/files.h"
#include "core/handles.h"
#include "core/log.h"
#include "core/text.h"
#include "support/text_file.h"

namespace {

using testing::HasSubstr;

TEST(Text, CopyIsCutAndTerminated) {
    char field[4] = {'#', '#', '#', '#'};
    for (auto [from, to] :
         {std::pair(static_cast<const char *>(nullptr), ""), {"abc", "abc"}, {"abcd", "abc"}}) {
        copy_text(field, from);
        EXPECT_STREQ(field, to);
    }
    EXPECT_STREQ(format_text<4>("%d", 123456).text, "123");
}

TEST(Text, MacAddresses) {
    const std::pair<const char *, const char *> rows[] = {
        {"a1b2c3d4e5f6", "A1:B2:C3:D4:E5:F6"},
        {"a1b2xxd4e5f6", "A1:B2:00:00:00:00"},
        {"", "00:00:00:00:00:00"},
        {"-1b2", "FF:B2:00:00:00:00"},
    };
    for (auto [digits, colon] : rows) {
        char text[64] = "";
        EXPECT_EQ(set_colon_mac(digits, text, sizeof text), 17) << digits;
        EXPECT_STREQ(text, colon);
    }
    EXPECT_STREQ(mac_lower_hex("A1B2xxD4E5F6").text, "a1b200000000");
    for (int size : {2, 3, 18, 19}) {
        std::string text(32, '#');
        EXPECT_EQ(set_colon_mac("a1b2c3d4e5f6", text.data(), size), 17);
        size_t kept = std::min<size_t>(static_cast<size_t>(size) - 2, 17);
        EXPECT_EQ(text.substr(0, kept + 2), std::string("A1:B2:C3:D4:E5:F6").substr(0, kept) + '\0' + '#')
            << size;
    }
    char text[8];
    EXPECT_EQ(set_colon_mac(nullptr, text, 8), -1);
    EXPECT_EQ(set_colon_mac("a1", nullptr, 8), -1);
    EXPECT_EQ(set_colon_mac("a1", text, 1), -1);
}

TEST(Text, TrailingBlanksAndCapitals) {
    const std::pair<std::string, std::string> rows[] = {
        {" a b \t\r\n", " a b"}, {"abc\v", "abc\v"}, {" \t\r\n", ""}, {"", ""}};
    for (auto [text, stripped] : rows) {
        util_strip_blank_of_string_end(text.data());
        EXPECT_STREQ(text.c_str(), stripped.c_str());
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
    struct stat status = {};
    stat("/tmp/file", &status);
    EXPECT_EQ(status.st_mode & 0777, 0666u);
    EXPECT_FALSE(std::filesystem::exists("/tmp/file.bak"));

    EXPECT_FALSE(replace_file("/tmp/none/file", "x", 0600));
    std::filesystem::create_directories("/tmp/directory/inside");
    EXPECT_FALSE(replace_file("/tmp/directory", "x", 0600));
    EXPECT_FALSE(std::filesystem::exists("/tmp/directory.bak"));

    EXPECT_FALSE(write_all(Descriptor(open("/dev/full", O_WRONLY)).get(), "x", 1));
}

TEST(Command, Results) {
    set_log_filepath(nullptr);
    struct Row {
        const char *command;
        int result, exit_code, extended;
    };
    const Row rows[] = {{"true", 0, 0, 0},
                        {"exit 3", 0, 3, -1},
                        {"/none", 0, 127, -1},
                        {"kill -9 $$", -1, 77, -1},
                        {nullptr, -1, 77, -1}};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.command == nullptr ? "null" : row.command);
        for (auto run : {run_cmd, rvxa_run_cmd}) {
            int exit_code = 77;
            EXPECT_EQ(run(&exit_code, row.command), row.result);
            EXPECT_EQ(exit_code, row.exit_code);
        }
        EXPECT_EQ(run_cmd_ext(row.command), row.extended);
        EXPECT_EQ(rvxa_run_cmd_ext(row.command), row.extended);
    }
    std::string log = text_of("/apvar/log/qvtk.log");
    for (const char *part : {"[run_cmd][", "]Child process is signaled\n", "]cmd:exit 3\n", "]status:768\n",
                             "]ec:3 cmd:exit 3\n", "]status:9\n"})
        EXPECT_THAT(log, HasSubstr(part));
}

TEST(StorageFile, IsMadeOnceAndLeftAlone) {
    set_log_filepath(nullptr);
    const std::string defaults = "inmemoryop=0\noutmemoryop=0\nsamba=0\nhcdn_enable=1\nhcdn_open=0\nisusb=1";
    EXPECT_EQ(ecm_init(), 0);
    EXPECT_EQ(text_of("/apetc/rvxa/ecm.conf"), defaults);
    std::ofstream("/apetc/rvxa/ecm.conf") << "";
    EXPECT_EQ(ecm_init(), 0);
    EXPECT_EQ(text_of("/apetc/rvxa/ecm.conf"), "");
    std::filesystem::remove_all("/apetc/rvxa");
    EXPECT_EQ(ecm_init(), -1);
    std::string log = text_of("/apvar/log/qvtk.log");
    for (const char *part :
         {"[ecm_init][", "]end\n", "]file:/apetc/rvxa/ecm.conf is exist\n[",
          "]file:/apetc/rvxa/ecm.conf is exist\n\n", "]open file:/apetc/rvxa/ecm.conf fail\n"})
        EXPECT_THAT(log, HasSubstr(part));
}

TEST(Signals, InterruptClearsTheRunFlagAndTheProcessGoesOn) {
    set_log_filepath(nullptr);
    ASSERT_EQ(install_sig_exit(), 0);
    ASSERT_EQ(runflag, 1);
    EXPECT_EQ(run_cmd_ext("kill -INT $PPID"), 0); // also while a command runs
    auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (runflag != 0 && std::chrono::steady_clock::now() < limit)
        std::this_thread::yield();
    EXPECT_EQ(runflag, 0);
    EXPECT_THAT(text_of("/apvar/log/qvtk.log"), HasSubstr("[sig_exit]["));
    EXPECT_THAT(text_of("/apvar/log/qvtk.log"), HasSubstr("]destroy ubus_mutex\n"));
}

TEST(Signals, EndedChildrenAreReaped) {
    set_log_filepath(nullptr);
    pid_t child = fork();
    if (child == 0) _exit(0);
    siginfo_t ended = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    sig_handle(SIGUSR1);
    sig_handle(SIGCHLD);
    EXPECT_EQ(waitpid(child, nullptr, 0), -1);
    std::string log = text_of("/apvar/log/qvtk.log");
    EXPECT_THAT(log, testing::MatchesRegex("[^\n]*handle child exit!\n[^\n]*child\\(-1\\) had exit!\n"));
}

} // namespace
