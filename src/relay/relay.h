// SPDX-License-Identifier: Apache-2.0
// The local event relay: datagrams of this process and of others become events, properties and progress of
// the cloud.
#pragma once

#include <cstddef>

// Bytes of an event's body with its end; a longer one is cut.
inline constexpr size_t EVENT_BODY = 200;
// The longest quoted address that the body of "RemoteCapSuccess" carries whole.
inline constexpr size_t CAPTURE_ADDRESS_MAX = EVENT_BODY - sizeof R"({"result": })";

// What the relay calls in modules that build on it; main sets them before the relay thread starts. A null
// slot is passed over.
struct RelayActions {
    void (*set_check_interval)(long seconds);                // "updatesettime" with "otaCheckInterval"
    int (*all_devices_report)();                             // "allDevicesReport"
    int (*capture_address)(char *address, int address_size); // "RemoteCapSuccess": where the capture went
};
void set_relay_actions(const RelayActions &actions);

// Opens the server socket, which eventudp_server closes. 0, or -1 after a console message.
int creat_event_server();

// Thread body: receives and handles datagrams one at a time. It looks at *run_flag, a std::atomic<int>, after
// each and ends when that is 0. A receive error ends the process with status 1.
void *eventudp_server(void *run_flag);

// Handles one datagram of `length` bytes, which need no terminator. 0 when handled or ignored; -1 not JSON,
// -2 no "action", -3, -31, -4, -5 a member that the action needs is missing.
int handle_qvtk_event(const char *text, int length);
