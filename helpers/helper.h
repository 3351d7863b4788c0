// SPDX-License-Identifier: Apache-2.0
// What the helper programs do alike. They are short-lived, have one thread, and tell their caller by the exit
// status how it went: 0 the server took it, 1 it did not and one line on stderr says why, 2 wrong usage.
#pragma once

#include <string>

#include "core/handles.h"
#include "https/transfer.h"

inline constexpr int EXIT_WRONG_USAGE = 2;
inline constexpr long CONNECT_SECONDS = 15;
inline constexpr long TRANSFER_SECONDS = 120;
inline constexpr unsigned PROGRAM_SECONDS = 180; // bus calls included

// Begins a helper: keeps the agent's own console messages, which may hold secrets, off the caller's terminal
// and log, and ends the program with status 1 when it has run for PROGRAM_SECONDS.
void start_helper(const char *name);
// Writes the line "NAME: MESSAGE" to the caller's stderr. Returns false, for `return fail(...)`.
bool fail(const char *format, ...) __attribute__((format(printf, 1, 2)));
// Writes "usage: ..." there. Returns EXIT_WRONG_USAGE.
int wrong_usage(const char *text);

// What a server answered, at most `limit` bytes; more fails the transfer.
struct Answer {
    std::string text;
    size_t limit;
};
inline constexpr size_t REPLY_LIMIT = 64 * 1024;

// Performs the prepared transfer with the limits and options of all helpers. True when the answer is HTTP
// 2xx.
bool exchange(Transfer *transfer, const char *address, Answer *answer);
// Takes the answer as the server's JSON reply. True when its "code" is 0.
bool was_accepted(const Answer &answer, JsonRoot *reply);

// The address that the agent left in /tmp/url.txt; a file that somebody else made is not read.
bool read_address(std::string *address);
