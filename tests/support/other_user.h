// SPDX-License-Identifier: Apache-2.0
// Files of another user, where the test may make some.
#pragma once

#include <cstdlib>
#include <unistd.h>

inline constexpr uid_t SOMEBODY = 12345;

// Whether files can be given to SOMEBODY: by root, and not in a user namespace that knows root alone.
inline bool can_give_files_away() {
    char path[] = "/tmp/givenXXXXXX";
    const int file = mkstemp(path);
    const bool given = file >= 0 && fchown(file, SOMEBODY, SOMEBODY) == 0;
    close(file);
    unlink(path);
    return given;
}
