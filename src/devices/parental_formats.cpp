// SPDX-License-Identifier: Apache-2.0
#include "devices/parental_formats.h"

#include <cstdio>
#include <cstring>

#include "core/log.h"
#include "core/text.h"

namespace {

constexpr int SUNDAY = WEEK_DAYS - 1; // in the cloud's order

bool is_day_time(int hour, int minute) {
    const bool last_moment = hour == 24 && minute == 0;
    return (hour >= 0 && hour <= 23 && minute >= 0 && minute <= 59) || last_moment;
}

} // namespace

int change_week(const int32_t days[WEEK_DAYS], char *week, size_t size) {
    if (days == nullptr || week == nullptr || size == 0) return -1;
    char digits[WEEK_TEXT_SIZE] = "";
    char *end = digits;
    if (days[SUNDAY] != 0) *end++ = '0';
    for (int day = 0; day < SUNDAY; day++)
        if (days[day] != 0) *end++ = static_cast<char>('1' + day);
    copy_text(week, size, digits);
    return 0;
}

int get_report_week(const char *week, int32_t days[WEEK_DAYS]) {
    if (week == nullptr || days == nullptr) return -1;
    for (int day = 0; day < WEEK_DAYS; day++)
        days[day] = 0;
    if (week[0] == '0') days[SUNDAY] = 1;
    for (; *week != '\0'; week++)
        if (*week >= '1' && *week <= '6') days[*week - '1'] = 1;
    return 0;
}

int cut_timeFrame(const char *frame, char (&start)[DAY_TIME_SIZE], char (&end)[DAY_TIME_SIZE]) {
    const char *hyphen = frame == nullptr ? nullptr : strchr(frame, '-');
    if (hyphen == nullptr) {
        if (frame != nullptr) LOG("timeFrame:%s format is error", frame);
        return -1;
    }
    copy_text(end, hyphen + 1);
    snprintf(start, sizeof start, "%.*s", static_cast<int>(hyphen - frame), frame);
    return 0;
}

int delete_str_colon(const char *time, char (&to)[DAY_TIME_SIZE]) {
    int hour = -1;
    int minute = -1;
    if (time == nullptr || sscanf(time, "%02d:%02d", &hour, &minute) != 2) return -1;
    if (!is_day_time(hour, minute)) return -1;
    snprintf(to, sizeof to, "%02d%02d", hour, minute);
    return 0;
}

int add_str_colon(const char *digits, char (&to)[DAY_TIME_SIZE]) {
    int hour = -1;
    int minute = -1;
    if (digits == nullptr || sscanf(digits, "%02d%02d", &hour, &minute) != 2) return -1;
    if (!is_day_time(hour, minute)) return -1;
    snprintf(to, sizeof to, "%02d:%02d", hour, minute);
    return 0;
}

int join_timeFrame(const char *start, const char *end, char (&frame)[TIME_FRAME_SIZE]) {
    char from[DAY_TIME_SIZE];
    char until[DAY_TIME_SIZE];
    if (add_str_colon(start, from) != 0 || add_str_colon(end, until) != 0) return -1;
    snprintf(frame, sizeof frame, "%s-%s", from, until);
    return 0;
}
