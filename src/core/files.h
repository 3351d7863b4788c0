// SPDX-License-Identifier: Apache-2.0
// Small whole files. Any thread; callers that share a file serialise themselves.
#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>

#include "core/handles.h"

// Reads at most `limit` bytes of the file into `content`; bytes behind them are ignored. False when it cannot
// be read.
bool read_file(const char *path, size_t limit, std::string *content);

// The next ones are for folders that others may write to, where a name says nothing about who made the file.
//
// Makes a new file of mode 0600, open for writing. Whatever has the name (a file, a link, a FIFO) is removed
// unopened and never written to, so whoever has the old file open keeps it whole. None, with errno, when the
// name cannot be had, as when it is a directory's.
Descriptor create_private_file(const char *path);
// Opens a regular file of this user or root for reading, also through a link of theirs. None, with errno
// (EPERM: somebody else's, or no regular file), in any other case; never waits for a FIFO's other end.
Descriptor open_own_file(const char *path);
// The same as a stream.
FileHandle open_own_stream(const char *path);
// read_file of what open_own_file opens.
bool read_own_file(const char *path, size_t limit, std::string *content);

// Replaces the file's content, whole or not at all: makes "PATH.bak" anew, gives it the mode, renames it over
// PATH. False, with the old file as it was, when any step fails.
bool replace_file(const char *path, const std::string &content, mode_t mode);

// Writes all the bytes to an open descriptor; false when that fails on the way.
bool write_all(int file, const char *data, size_t length);
