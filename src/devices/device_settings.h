// SPDX-License-Identifier: Apache-2.0
// The set side of the apDevices property: a request holds elements like those of the document, one per
// device, and only what differs from the router's present state is written, device by device.
//
// What is written for a device is what its own element asks for. The flags say which kinds of change are
// outstanding; a flag that no step has acted on stays up for the next element or request.
#pragma once

#include <cstdint>

#include "devices/device_document.h"
#include "devices/device_writes.h"
#include "devices/parental_workers.h"

inline constexpr int DEVICE_NAME_SIZE = 128;
inline constexpr size_t MOST_RULES = 64; // taken of one list of an element

// What operationType selects.
enum OperationType : int32_t { OPERATION_SETTINGS = 1, OPERATION_PARENTAL = 3 };

// One element of a request. -1: not asked for.
struct DeviceSettings {
    char mac[DEVICE_MAC_SIZE];
    char name[DEVICE_NAME_SIZE];
    SpeedLimit limit;
    int32_t operationType;
    int32_t blackEnable;
    WebControl urls;  // addresses with switches of their own
    WebControl sites; // addresses without
    TimeControl times;
    AppControl apps;
    int32_t onlineNotice;
    int32_t parentalEnable;
    int32_t timeControlEnable;
    int32_t webControlEnable;
    int32_t disconnect;
    int32_t parentFlag;
    bool has_name;
    bool has_limit;
    bool has_apps;
};

// 0 or 1; written under apdevice_mutex.
extern int black_flag, disconnect_flag, name_flag, limitSpeed_flag, notice_flag;
extern int parentControl_flag, parent_app_flag;

// How often the request at work has waited for the daemon to take rules over; guarded by apdevice_mutex.
extern int parental_waits;
inline constexpr int MOST_PARENTAL_WAITS = 32; // of one request, so that it ends some time

// The set slot. Keeps reports silent and holds apdevice_mutex meanwhile; ten seconds longer for each device
// whose parental control is set, up to MOST_PARENTAL_WAITS times. 0; -1 for missing or empty arguments, for
// what is no JSON or has no array "apDevices", and when an element's "limitSpeed" lacks "open", which ends
// the request there. Any thread.
int apDevices_set(const char *context, const char *message, char *reply, int reply_length);

// Forgets the element handled last. Takes apdevice_mutex. Any thread.
void clear_device_settings();
