// SPDX-License-Identifier: Apache-2.0
// The process's one connection to the bus, and the object ids found over it. For core/bus; the caller holds
// ubus_mutex.
#pragma once

#include <cstdint>

struct ubus_context;

namespace bus {

// Connects to the socket at path (null: the library's default); null when nobody answers there in time.
// SIGPIPE is ignored from then on; SIGINT, SIGTERM and SIGCHLD keep their dispositions, although the library
// takes them over.
ubus_context *connect_to(const char *path);

// The shared connection, opened when there is none; null when that fails.
ubus_context *shared();
// Closes it and forgets the ids.
void drop_shared();

// True when a call that gave this status found the peer gone, or was ended because its time was over.
bool is_lost(const ubus_context *connection, int status);

// Whether an object of that name or below it ("NAME.") is on the bus. A ubus status.
int find_any(ubus_context *connection, const char *name, bool *found);

// The id of an object, looked up over the connection; those of the shared connection are kept. A ubus status.
int find_object(ubus_context *connection, const char *object, uint32_t *id);
// The same after the id that was kept turned out to be stale.
int find_object_again(ubus_context *connection, const char *object, uint32_t *id);

} // namespace bus
