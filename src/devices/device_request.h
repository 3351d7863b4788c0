// SPDX-License-Identifier: Apache-2.0
// One element of an apDevices request, read into a record. Any thread.
#pragma once

#include <json-c/json.h>

#include "devices/device_settings.h"

// What "ParentControlType" selects; 1 to 6 is the application rules of that apptype.
inline constexpr int32_t TIME_PART = 7, WEB_PART = 8, WEB_AND_TIME_PARTS = -1;

// The settings of an element, without its rules; integers that are absent become -1, names are cut between
// characters. False when it limits the speed without saying whether the limit is on.
bool read_settings(json_object *element, DeviceSettings *settings);

// The rules of an element, at most MOST_RULES of each list, which is logged. Each becomes switched off when
// the request's "parentalEnable" is 1, or when it is there and the switch of the kind of rule is 0; else it
// has its own "open", and is on without. False when the element has no such part.
bool read_web_control(json_object *element, DeviceSettings *settings);
bool read_time_control(json_object *element, DeviceSettings *settings);
bool get_apdev_appcontrol_data(json_object *element, int apptype, DeviceSettings *settings);
