// SPDX-License-Identifier: Apache-2.0
// The property "ledStatus": the router's LEDs "on" or "off". Its document has no wrapping object.
#pragma once

// Slots of the property table.
int ledStatus_init();
int ledStatus_set(const char *context, const char *value, char *reply, int reply_length);
int ledStatus_get(const char *context, char *output, int length);
int ledStatus_report();
