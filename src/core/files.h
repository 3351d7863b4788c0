// SPDX-License-Identifier: Apache-2.0
// Small whole files. Any thread; callers that share a file serialise themselves.
#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>

// Reads at most `limit` bytes of the file into `content`; bytes behind them are ignored. False when it cannot
// be read.
bool read_file(const char *path, size_t limit, std::string *content);

// Replaces the file's content, whole or not at all: writes "PATH.bak", gives it the mode, renames it over
// PATH. False, with the old file as it was, when any step fails.
bool replace_file(const char *path, const std::string &content, mode_t mode);

// Writes all the bytes to an open descriptor; false when that fails on the way.
bool write_all(int file, const char *data, size_t length);
