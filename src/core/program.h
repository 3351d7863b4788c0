// SPDX-License-Identifier: Apache-2.0
// What the agent and its helper programs answer when they are asked about themselves.
#pragma once

// With --version as the only argument, prints "NAME VERSION" on standard output; with --help, "usage: USAGE".
// True when that was asked, and the program is to end with success. Opens nothing; call it before anything
// else is started.
bool told_about_program(int count, char **words, const char *name, const char *usage);
