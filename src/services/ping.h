// SPDX-License-Identifier: Apache-2.0
// Pings, which the daemon runs and whose result it leaves in a file, as the ping program prints it. The file
// belongs to whoever pinged last; it is read without a lock. Any thread.
#pragma once

inline constexpr char PING_RESULT[] = "/aptmp/pingrt";
inline constexpr char PING_RESULT_ELSEWHERE[] = "/tmp/pingrt"; // where the first is not there

struct PingResult {
    int loss = 100; // percent
    char delay[128] = "";
};

// Has the daemon ping the host, so many times; the daemon's own number for 0. 0, or -1 when it refuses.
int start_ping(const char *host, int count);

// Loss and average delay ("9.334", milliseconds, as the program writes it) of the last ping; what the file
// does not say stays as it is. 0; -1, which is logged, when there is no file.
int read_ping_result(PingResult *result);

// Pings the host `count` times and waits two seconds: 1 when the shortest round trip was at least `timeout`
// milliseconds, else 0, also when the ping or its result fails. Without a round trip the delay counts as 0.
int get_dnsDelay(const char *host, int count, int timeout);
