// SPDX-License-Identifier: Apache-2.0
// Parental control as it is written to the daemon: the supervised devices, their switches, and one rule at a
// time.
//
// All give 0, or -1 when the daemon refused or did not answer. A null or empty MAC, a null text and a policy
// that is neither BLACK nor WHITE are logged ("param is error") and give -1 without a call. Any thread.
#pragma once

#include <cstdint>
#include <string>

#include "devices/parental_formats.h"

// What a device's addresses are: all that it may not reach, or all that it may.
enum ControlPolicy : int32_t { BLACK = 0, WHITE = 1 };

struct UrlRule {
    std::string url;
    int32_t open;
};
struct AppRule {
    std::string url; // may be empty for a rule that the daemon has
    std::string appname;
    int32_t apptype;
    int32_t open;
};
struct TimeRule {
    char timeFrame[TIME_FRAME_SIZE];
    int32_t daysOfWeek[WEEK_DAYS];
    int32_t open;
};

// Parental control as a whole is switched on.
int start_parentalControl();
// A device is put under supervision, or taken out.
int add_parentalControl(const char *mac, const char *name);
int clear_parentControl(const char *mac);

// All address and application rules of a device, or all its time rules, are deleted.
int clear_parentUrlControl(const char *mac);
int clear_parentTimeControl(const char *mac);

// One switch of a supervised device.
int set_parentEnable(const char *mac, const char *name, int32_t value);
int set_parentUrlEnable(const char *mac, const char *name, int32_t value);
int set_parentTimeEnable(const char *mac, const char *name, int32_t value);
// Those of the three switches that differ from the daemon's; -1 stands for one that is to stay. -1 when one
// could not be written; the others are written all the same. `announced` logs each that is about to be
// written ("start set parentalEnable").
int set_parent_enable(const char *mac, const char *name, int32_t parental_enable, int32_t time_control_enable,
                      int32_t web_control_enable, bool announced = false);

// The policy of a device's addresses.
int set_url_filterType(const char *mac, int32_t policy);
// One address, application or time rule is added. The URL of an application's rule must not be empty.
int add_one_parentalWebControl(const char *mac, int32_t enable, const char *url, int32_t policy);
int add_one_parent_appcontrol(const char *mac, const AppRule *rule);
int add_one_parentalTimeControl(const char *mac, const TimeRule *rule);
// The application rule of that index is switched.
int set_one_parent_appcontrol(const char *mac, const AppRule *rule, int32_t index);

// 0, and index and switch of the device's rule for that URL; -1 when there is none.
int find_url_exist_controllist(const char *mac, const char *url, int32_t *index, int32_t *enable);
// The same of the device's rule for the application of that name and type, with its URL, which goes into the
// rule.
int find_app_exist_controllist(const char *mac, AppRule *rule, int32_t *index, int32_t *enable);
