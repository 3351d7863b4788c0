// SPDX-License-Identifier: Apache-2.0
#include "core/program.h"

#include <cstdio>
#include <cstring>

bool told_about_program(int count, char **words, const char *name, const char *usage) {
    if (count != 2) return false;
    if (strcmp(words[1], "--version") == 0)
        printf("%s %s\n", name, QVTK_VERSION);
    else if (strcmp(words[1], "--help") == 0)
        printf("usage: %s\n", usage);
    else
        return false;
    return true;
}
