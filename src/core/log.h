// SPDX-License-Identifier: Apache-2.0
// The main log, the log of the upgrade path, and console lines. Any thread may call these; a call opens the
// file, appends one line and closes it, so the files may be removed or rotated at any time. A file that has
// grown past LOG_SIZE_CEILING is emptied by the next line. Failures cost a console line and the line itself,
// nothing else.
#pragma once

#include <cstddef>
#include <ctime>

inline constexpr long LOG_SIZE_CEILING = 1048576; // bytes

// The local time as the log writes it.
struct LogTime {
    char text[64];
};
LogTime log_time();

// Console only; text beyond 2047 characters is cut.
void qvtk_log(const char *format, ...) __attribute__((format(printf, 1, 2)));
// The main log; text beyond 16383 characters is cut.
void qvtk_log_to_file(const char *format, ...) __attribute__((format(printf, 1, 2)));
// The upgrade log; text beyond 2047 characters is cut.
void qvtk_log_to_file_upgrade(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Where the logs go; at most 127 characters are kept, null or empty selects the default, which also serves
// until then. Call before the first thread starts.
void set_log_filepath(const char *path);         // default /apvar/log/qvtk.log
void set_upgrade_log_filepath(const char *path); // default /apetc/rvxa/qvtk_upgrade.log

// Removes the file that qvtk_log_to_file_upgrade writes, if there is one.
void delete_upgrade_log();

// Where a line says that it comes from. As a default argument of shared code, LogSite::here() names the
// caller:
//     int property_get(..., LogSite site = LogSite::here());
struct LogSite {
    const char *function;
    int line;
    static constexpr LogSite here(const char *function = __builtin_FUNCTION(), int line = __builtin_LINE()) {
        return {function, line};
    }
};

// One line of the main log: "[time][function][line]" and the text.
#define LOG(format, ...)                                                                                     \
    qvtk_log_to_file("[%s][%s][%d]" format, log_time().text, __func__, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
// The same in the name of a caller.
#define LOG_AT(site, format, ...)                                                                            \
    qvtk_log_to_file("[%s][%s][%d]" format, log_time().text, (site).function,                                \
                     (site).line __VA_OPT__(, ) __VA_ARGS__)
// The same in the upgrade log.
#define LOG_UPGRADE(format, ...)                                                                             \
    qvtk_log_to_file_upgrade("[%s][%s][%d]" format, log_time().text, __func__,                               \
                             __LINE__ __VA_OPT__(, ) __VA_ARGS__)
