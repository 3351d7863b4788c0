// SPDX-License-Identifier: Apache-2.0
#include "core/log.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "support/main_log.h"
#include "support/moving_clock.h"
#include "support/text_file.h"

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

struct Logger {
    const char *name;
    size_t kept; // characters of a message
    void (*set_path)(const char *path);
    const char *fallback;
    void (*log)(const char *text);
};

const Logger LOGGERS[] = {
    {"main", 16383, set_log_filepath, "/apvar/log/qvtk.log",
     [](const char *text) { qvtk_log_to_file("%s", text); }},
    {"upgrade", 2047, set_upgrade_log_filepath, "/apetc/rvxa/qvtk_upgrade.log",
     [](const char *text) { qvtk_log_to_file_upgrade("%s", text); }},
};

TEST(Log, CutsLongMessagesAndEndsEachWithOneNewline) {
    for (const Logger &logger : LOGGERS) {
        SCOPED_TRACE(logger.name);
        logger.set_path("/tmp/log");
        for (size_t length : {size_t{0}, logger.kept - 1, logger.kept, logger.kept + 1, 3 * logger.kept}) {
            unlink("/tmp/log");
            logger.log(std::string(length, 'x').c_str());
            EXPECT_EQ(text_of("/tmp/log"), std::string(std::min(length, logger.kept), 'x') + "\n") << length;
        }
    }
    EXPECT_EQ(console_of([] { qvtk_log("%s", std::string(5000, 'x').c_str()); }),
              std::string(2047, 'x') + "\n");
}

TEST(Log, IsEmptiedByTheLineAfterTheCeiling) {
    for (const Logger &logger : LOGGERS)
        for (size_t size : {LOG_SIZE_CEILING, LOG_SIZE_CEILING + 1}) {
            logger.set_path("/tmp/log");
            std::ofstream("/tmp/log") << std::string(size, '.');
            logger.log("next");
            EXPECT_EQ(text_of("/tmp/log").size(), size > LOG_SIZE_CEILING ? 5 : size + 5) << logger.name;
        }
}

TEST(Log, GoesToTheDefaultWithoutAPathAndKeeps127CharactersOfOne) {
    const std::string long_path = "/tmp/" + std::string(200, 'p');
    for (const Logger &logger : LOGGERS)
        for (const char *path : {static_cast<const char *>(nullptr), "", long_path.c_str()}) {
            SCOPED_TRACE(logger.name);
            const std::string file = path != nullptr && *path ? long_path.substr(0, 127) : logger.fallback;
            logger.set_path(path);
            logger.log("line");
            EXPECT_EQ(text_of(file), "line\n");
            EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms{0600});
            unlink(file.c_str());
        }
}

TEST(Log, SaysOnTheConsoleWhatItCannotOpenOrWrite) {
    for (const auto &[path, failed] : {std::pair{"/tmp", "open"}, {"/dev/full", "write"}}) {
        std::string said = "log_filepath:";
        said.append(path).append("\nqvtk_log_to_file_upgrade [0-9]+ ").append(failed);
        said.append(" file:").append(path).append(" fail\n");
        set_upgrade_log_filepath(path);
        EXPECT_THAT(console_of([] { qvtk_log_to_file_upgrade("lost"); }), MatchesRegex(said));
    }
}

TEST(Log, LinesBeginWithTimeFunctionAndLine) {
    setenv("TZ", "UTC", 1);
    set_default_logs();
    moving_clock::set(1714550587); // 2024-05-01 08:03:07
    LOG("ret:%d\n", 5);
    LOG_UPGRADE("plain");
    EXPECT_THAT(main_log(), MatchesRegex(R"(\[2024-05-01 08:03:07\]\[TestBody\]\[[0-9]+\]ret:5)"
                                         "\n\n"));
    EXPECT_THAT(upgrade_log(), HasSubstr("[2024-05-01 08:03:07][TestBody]["));
    delete_upgrade_log();
    EXPECT_FALSE(std::filesystem::exists(UPGRADE_LOG));
}

TEST(Log, LinesOfSeveralThreadsStayWhole) {
    constexpr int LINES = 80; // of each thread; together below the ceiling
    set_log_filepath("/tmp/log");
    {
        std::vector<std::jthread> threads;
        for (char mark : {'a', 'b', 'c', 'd'})
            threads.emplace_back([mark] {
                for (int i = 0; i < LINES; i++)
                    qvtk_log_to_file("%s", std::string(3000, mark).c_str());
            });
    }
    std::ifstream log("/tmp/log");
    int whole = 0;
    for (std::string line; std::getline(log, line); whole++)
        ASSERT_EQ(line, std::string(3000, line.empty() ? '?' : line[0]));
    EXPECT_EQ(whole, 4 * LINES);
}

} // namespace
