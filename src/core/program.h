// SPDX-License-Identifier: Apache-2.0
// What every program of this project answers when it is asked about itself.
#pragma once

// With --version as the only argument, prints "NAME VERSION" on standard output; with --help, "usage: USAGE".
// True when that was asked, and the program is to end with success. Opens nothing; call it before anything
// else is started.
bool told_about_program(int count, char **words, const char *name, const char *usage);
