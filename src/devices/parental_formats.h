// SPDX-License-Identifier: Apache-2.0
// Kinds of rules, days and times of parental control as the cloud writes them and as the daemon writes them.
// Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr int WEEK_DAYS = 7;
inline constexpr size_t WEEK_TEXT_SIZE = WEEK_DAYS + 1;
inline constexpr size_t DAY_TIME_SIZE = 16;   // "08:30" or "0830", and room for what is neither
inline constexpr size_t TIME_FRAME_SIZE = 32; // "08:30-21:05"

// The kinds of application rules: the cloud's key and the daemon's "apptype". The order is that of the device
// document, which is not that of the numbers. A rule of type 0 or less is one of a plain address.
struct AppKind {
    const char *key;
    int apptype;
};
inline constexpr AppKind APP_KINDS[] = {
    {"ParentalGameControl", 1},   {"ParentalPayControl", 3},   {"ParentalShopControl", 5},
    {"ParentalSocialControl", 2}, {"ParentalVideoControl", 4}, {"ParentalInstallControl", 6},
};

// Seven switches, Monday first, as the daemon's day digits: "0" is Sunday and comes first, "1" to "6" are
// Monday to Saturday. Cut to size - 1 characters. 0, or -1 for a null argument or no room.
int change_week(const int32_t days[WEEK_DAYS], char *week, size_t size);
// The other way round. A "0" behind another character, and what is no day digit, count for nothing. -1 for a
// null argument.
int get_report_week(const char *week, int32_t days[WEEK_DAYS]);

// Splits "08:30-21:05" at its first "-". 0; -1, which is logged, when it has none; -1 for null.
int cut_timeFrame(const char *frame, char (&start)[DAY_TIME_SIZE], char (&end)[DAY_TIME_SIZE]);
// "08:30" to "0830". 0; -1, with `to` left alone, when it is no time of a day (24:00 is one) or null.
int delete_str_colon(const char *time, char (&to)[DAY_TIME_SIZE]);
// "0830" to "08:30"; the same results.
int add_str_colon(const char *digits, char (&to)[DAY_TIME_SIZE]);
// The daemon's two times as a time frame: "0830", "2105" to "08:30-21:05". The same results.
int join_timeFrame(const char *start, const char *end, char (&frame)[TIME_FRAME_SIZE]);
