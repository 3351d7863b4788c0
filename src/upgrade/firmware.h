// SPDX-License-Identifier: Apache-2.0
// What both ways of upgrading share: the image's digest, the record in the upgrade log, the hand-over to the
// router.
#pragma once

#include <cstdint>

#include "core/text.h"

// Loads the image at `address` over http or https into a new file of mode 0600, which replaces whatever has
// the name. `announced` is its size in bytes as the server told it, 0 or less when it did not. Loading stops
// ANNOUNCED_SLACK behind that size, without failing, since the check of the size is to come. It fails, with a
// line in the log, beyond IMAGE_LIMIT where no size was announced, and when less than DISK_RESERVE would be
// left on the disk. 0, a (positive) libcurl code, also when the file could not take it all, or one of the two
// below; no file is left unless it returns 0. Any thread.
enum class ProgressMeter { hidden, shown }; // libcurl's, on stderr
int fetch_image(const char *address, const char *path, int64_t announced, ProgressMeter meter);
inline constexpr int FETCH_NO_FILE = -1;    // it cannot be made; errno says why
inline constexpr int FETCH_NO_LIBRARY = -2; // libcurl cannot be used
inline constexpr int64_t ANNOUNCED_SLACK = 64 * 1024;
inline constexpr int64_t IMAGE_LIMIT = 256 * 1024 * 1024;
inline constexpr int64_t DISK_RESERVE = 2 * 1024 * 1024; // what the logs and state files may grow by

// The MD5 of a file as 32 lower-case hex digits, empty when it cannot be read. Any thread.
Text<33> md5_of_file(const char *path);

// True when the two digest texts are equal, whatever their case; no digest equals an empty or a null one.
bool same_digest(const char *one, const char *other);

// Hands the image at `path` to the router, which flashes it and restarts. 0 when accepted, else what
// set_dev_info returned.
int start_upgrade(const char *path);

// Writes the line {"newversion": "...", "strategy": "..."} to the upgrade log, where get_upgrade_info finds
// it after the restart.
void log_new_version(const char *version, const char *strategy);

// Keeps the outcome of the last upgrade (1 accepted, 0 failed) for the life of the process and writes it to
// the upgrade log.
void qvtk_set_download_upgrade_result(int result);
int qvtk_get_download_upgrade_result(); // -1 before the first
