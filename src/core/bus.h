// SPDX-License-Identifier: Apache-2.0
// Calls of the router's configuration daemon over ubus: one connection per process, opened anew when it was
// lost; one call at a time, under ubus_mutex; object ids looked up once and kept. Any thread may call
// these, the raw calls with the lock held.
//
// Replies are JSON documents that the caller owns through the root it passes in; the object returned is
// borrowed from that root. The root is set only when a function returns non-null.
#pragma once

#include "core/bus_message.h"
#include "core/fair_mutex.h"
#include "core/handles.h"
#include "core/log.h"

struct ubus_context;

inline constexpr char BUS_SOCKET[] = "/apvar/run/ubus/ubus.sock";
// How long the bus may take: to connect, to look an object up, and to answer a call; the last of them when it
// does not even take the call.
inline constexpr int BUS_CONNECT_MILLIS = 10000;
inline constexpr int BUS_LOOKUP_MILLIS = 10000;
inline constexpr int BUS_TIMEOUT_MILLIS = 30000;
inline constexpr int BUS_SEND_MILLIS = BUS_TIMEOUT_MILLIS + 5000;

// Serialises every call on the shared connection, first come, first served.
extern FairMutex ubus_mutex;

// Ignores SIGPIPE and connects, trying once a second until it succeeds; returns the connection, which stays
// the process's. Non-zero also registers it with the event loop for reading. Leaves the dispositions of
// SIGINT, SIGTERM and SIGCHLD as they were, although the bus library takes them over.
ubus_context *ubus_init(int add_to_loop);
// Closes the connection.
void ubus_done();
// Waits, looking once a second, until the configuration daemon has any object on the bus: "vrop" or one below
// it.
void ubus_wait_daemon();

// Raw calls: the reply, owned by the caller, or null when there was none. A message may be null. The caller
// holds ubus_mutex; the access functions below take it themselves.
json_object *_ubus_call(const char *object, const char *method, blob_attr *message);
json_object *_ubus_call_(ubus_context *connection, const char *object, const char *method,
                         blob_attr *message);
// The same over a connection made for this call on the bus library's default socket.
json_object *_ubus_call_r(const char *object, const char *method, blob_attr *message);
// Sends the call and returns; completion is printed when the event loop serves the connection. 0 when sent,
// else a ubus status.
int _ubus_call_async(const char *object, const char *method, blob_attr *message);

// The reply's member named like the object.
json_object *get_dev_info(const char *object, const char *method, JsonRoot *root);
// The same with arguments; null also when the reply's "result" is not 0.
json_object *get_param_dev_info(const char *object, const char *method, const BusMessage &message,
                                JsonRoot *root);
// The reply's member of the given name.
json_object *get_dev_specInfo(const char *object, const char *method, const char *member, JsonRoot *root);
// Element `index` of the array in the member named like the object.
json_object *get_one_array_info(const char *object, const char *method, int index, JsonRoot *root);
// 0 when the reply's "result" reads 0 or is missing, else -1, also without a reply.
int set_dev_info(const char *object, const char *method, const BusMessage &message);
int set_dev_info(const char *object, const char *method); // without arguments
// The same; what it does not get is logged as `refused` in the caller's name.
int set_or_log(const char *object, const char *method, const BusMessage &message, const char *refused,
               LogSite site = LogSite::here());

// A result text of the daemon as a return code: null or a text whose integer value is not 0 gives -1, else 0.
int result_to_ret(const char *result);
