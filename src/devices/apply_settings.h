// SPDX-License-Identifier: Apache-2.0
// What is written of one element of a request, step by step.
#pragma once

#include "devices/device_settings.h"

// Carries out what the element asks for and the flags say, in a fixed order. The last step's result; -1 for
// null. The caller holds apdevice_mutex.
int set_apDevices_config(const DeviceSettings *settings);

// The name under which the device is supervised: the one asked for, or else the present one; "" without
// either. Any thread.
void supervised_name(const DeviceSettings &settings, char (&name)[DEVICE_NAME_SIZE]);
