// SPDX-License-Identifier: Apache-2.0
#include "services/ping.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "core/bus.h"
#include "core/clock.h"
#include "core/files.h"
#include "core/handles.h"
#include "core/log.h"
#include "core/text.h"

namespace {

constexpr size_t LINE_BYTES = 128;
constexpr unsigned DNS_PAUSE_SECONDS = 2;
constexpr char LOSS_LINE[] = "loss";
constexpr char TIMES_LINE[] = "round-trip";

FileHandle open_result(const char *path, LogSite site = LogSite::here()) {
    FileHandle file = open_own_stream(path);
    if (!file) LOG_AT(site, "open file:%s fail", PING_RESULT);
    return file;
}

// "4 packets transmitted, 3 packets received, 25% packet loss": what stands behind the last comma.
void read_loss(const char *line, int *loss) {
    const char *comma = strrchr(line, ',');
    if (comma == nullptr || strchr(comma, '%') == nullptr) return;
    char percent[8];
    copy_text(percent, comma + 1);
    delete_strip_string_extra_characters(percent);
    *loss = leading_integer(percent);
}

// "round-trip min/avg/max = 8.120/9.334/12.871 ms": the second of what stands behind the last "=".
void read_average(char *line, char (&delay)[LINE_BYTES]) {
    if (char *unit = strstr(line, "ms")) *unit = '\0';
    char *times = strrchr(line, '=');
    if (times == nullptr) return;
    delete_strip_string_extra_characters(++times);
    LOG("ptr:%s", times);
    char shortest[LINE_BYTES], average[LINE_BYTES];
    if (sscanf(times, "%127[^/]/%127[^/]", shortest, average) == 2) copy_text(delay, average);
}

// Reads up to the line with the round-trip times, and the loss from those before. False when there is none.
bool read_to_times(FILE *file, char (&line)[LINE_BYTES], int *loss) {
    while (fgets(line, sizeof line, file) != nullptr) {
        if (strstr(line, LOSS_LINE) != nullptr) read_loss(line, loss);
        if (strstr(line, TIMES_LINE) != nullptr) return true;
    }
    return false;
}

} // namespace

int start_ping(const char *host, int count) {
    BusMessage message;
    message.text("host", host);
    if (count > 0) message.integer("num", count);
    return set_dev_info("vrop.diagnosis", "ping", message);
}

int read_ping_result(PingResult *result) {
    const FileHandle file = open_result(access(PING_RESULT, F_OK) == 0 ? PING_RESULT : PING_RESULT_ELSEWHERE);
    if (!file) return -1;
    char line[LINE_BYTES];
    if (read_to_times(file.get(), line, &result->loss)) read_average(line, result->delay);
    return 0;
}

int get_dnsDelay(const char *host, int count, int timeout) {
    if (start_ping(host, count) != 0) {
        LOG("get dns delay fail");
        return 0;
    }
    pause_seconds(DNS_PAUSE_SECONDS);
    const FileHandle file = open_result(PING_RESULT);
    if (!file) return 0;
    char line[LINE_BYTES];
    int loss = 0;
    const char *times = read_to_times(file.get(), line, &loss) ? strrchr(line, '=') : nullptr;
    const int shortest = times != nullptr ? leading_integer(times + 1) : 0;
    return shortest >= timeout ? 1 : 0;
}
