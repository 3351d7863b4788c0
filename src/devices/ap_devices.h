// SPDX-License-Identifier: Apache-2.0
// The apDevices property: all client devices with their link, name, filter, limits and parental control. Its
// set slot is in device_settings.h. Slots as in tebra_sdk.h; any thread.
#pragma once

int apDevices_init();
int apDevices_get(const char *context, char *output, int length);

// Posts the document, cut to 16383 characters, when it differs from the one posted last; nothing while a
// settings request is at work. 0, or -1 when there is no document. In no table; one call at a time.
int apDevices_report();

// The relay's action "allDevicesReport": posts the document as the event of that name. 0, or -1 when there is
// no document; while a settings request is at work it says so and posts nothing.
int apDevices_event_report();
