// SPDX-License-Identifier: Apache-2.0
// due_second FROM: the first second from FROM on (of UTC, since 1970) at which a daemon that starts then, and
// whose clock stands still, finds its nightly report due. The agent draws the report's point with its C
// library, so this program asks the agent's own code, built for the same one.
#include <cstdio>
#include <cstdlib>

#include "devices/runtime.h"

int main(int argc, char **argv) {
    constexpr long DAY = 86400;
    constexpr long NIGHTS = 30;
    constexpr long WINDOW = 4; // seconds after the point
    const long from = argc == 2 ? atol(argv[1]) : 0;
    for (long second = from; second < from + NIGHTS * DAY; second++) {
        const long point = sta_status_start(static_cast<unsigned>(second)).report_point;
        if (point < second % DAY && second % DAY <= point + WINDOW)
            return printf("%ld\n", second) > 0 ? 0 : 1;
    }
    fprintf(stderr, "due_second: no night after %ld has such a second\n", from);
    return 1;
}
