// SPDX-License-Identifier: Apache-2.0
#include "core/log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>

#include "core/clock.h"
#include "core/files.h"
#include "core/handles.h"
#include "core/text.h"

namespace {

constexpr size_t MAIN_LINE = 16384;
constexpr size_t SHORT_LINE = 2048;

using Path = Text<128>;

// Where a log goes: the fallback until a path has been set, so that what is logged while the configuration is
// read is not lost, and when that is empty.
struct LogPath {
    const char *fallback;
    char set[128];
};
LogPath log_filepath = {"/apvar/log/qvtk.log", ""};
LogPath upgrade_log_filepath = {"/apetc/rvxa/qvtk_upgrade.log", ""};
// The thread that serves SIGINT may log while start-up still sets the paths.
std::mutex path_mutex;

Path path_of(const LogPath &log) {
    std::lock_guard lock(path_mutex);
    Path path;
    copy_text(path.text, log.set[0] != '\0' ? log.set : log.fallback);
    return path;
}

void set_path(LogPath *log, const char *path) {
    std::lock_guard lock(path_mutex);
    copy_text(log->set, path);
}

// Formats one line of at most size - 1 characters, with its newline in the terminator's place; returns its
// length, 0 when it cannot be formatted.
__attribute__((format(printf, 3, 0))) size_t format_line(char *line, size_t size, const char *format,
                                                         va_list arguments) {
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has started it
    int wanted = vsnprintf(line, size, format, arguments);
    if (wanted < 0) return 0;
    size_t length = std::min(static_cast<size_t>(wanted), size - 1);
    line[length] = '\n';
    return length + 1;
}

void empty_when_too_big(int file) {
    // lseek tells the size at a third of fstat's cost, and there is one on every line
    if (lseek(file, 0, SEEK_END) > LOG_SIZE_CEILING && ftruncate(file, 0) != 0) perror("ftruncate");
}

void append_line(const char *path, const char *line, size_t length, const char *logger, int source_line) {
    Descriptor file(open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600));
    if (!file) {
        qvtk_log("%s %d open file:%s fail", logger, source_line, path);
        return;
    }
    empty_when_too_big(file.get());
    if (!write_all(file.get(), line, length)) qvtk_log("%s %d write file:%s fail", logger, source_line, path);
}

} // namespace

LogTime log_time() {
    // most lines of a thread share their second with the one before
    thread_local time_t written_for = -1;
    thread_local LogTime time;
    if (written_for == now_seconds()) return time;
    written_for = now_seconds();
    struct tm now = local_time();
    snprintf(time.text, sizeof time.text, "%4d-%02d-%02d %02d:%02d:%02d%s", now.tm_year + 1900,
             now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec, "");
    return time;
}

void qvtk_log(const char *format, ...) {
    char line[SHORT_LINE];
    va_list arguments;
    va_start(arguments, format);
    size_t length = format_line(line, sizeof line, format, arguments);
    va_end(arguments);
    fwrite(line, 1, length, stdout);
}

void qvtk_log_to_file(const char *format, ...) {
    char line[MAIN_LINE];
    va_list arguments;
    va_start(arguments, format);
    size_t length = format_line(line, sizeof line, format, arguments);
    va_end(arguments);
    append_line(path_of(log_filepath).text, line, length, __func__, __LINE__);
}

void qvtk_log_to_file_upgrade(const char *format, ...) {
    char line[SHORT_LINE];
    va_list arguments;
    va_start(arguments, format);
    size_t length = format_line(line, sizeof line, format, arguments);
    va_end(arguments);
    Path path = path_of(upgrade_log_filepath);
    printf("log_filepath:%s\n", path.text);
    append_line(path.text, line, length, __func__, __LINE__);
}

void set_log_filepath(const char *path) {
    set_path(&log_filepath, path);
}

void set_upgrade_log_filepath(const char *path) {
    set_path(&upgrade_log_filepath, path);
}

void delete_upgrade_log() {
    unlink(path_of(upgrade_log_filepath).text);
}
