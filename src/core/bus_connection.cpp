// SPDX-License-Identifier: Apache-2.0
#include "core/bus_connection.h"

#include <csignal>
#include <map>
#include <string>

#include "core/bus.h"
#include "core/bus_library.h"

namespace bus {

namespace {

ubus_context *shared_connection;
std::map<std::string, uint32_t, std::less<>> object_ids;

// What a signal that the library would take over does while it connects: the same as without it.
void act_as_default(int number) {
    if (number == SIGCHLD) return;
    signal(number, SIG_DFL);
    raise(number);
}

// The library takes over signals whose disposition is the default when it connects, and its handlers only
// note that they came: the process could not be ended any more. It leaves foreign handlers alone, so that one
// stands in meanwhile.
class DefaultSignal {
  public:
    explicit DefaultSignal(int number) : number_(number) {
        struct sigaction current = {};
        sigaction(number, nullptr, &current);
        guarded_ = (current.sa_flags & SA_SIGINFO) == 0 && current.sa_handler == SIG_DFL;
        if (guarded_) signal(number, act_as_default);
    }
    ~DefaultSignal() {
        if (guarded_) signal(number_, SIG_DFL);
    }
    DefaultSignal(const DefaultSignal &) = delete;
    DefaultSignal &operator=(const DefaultSignal &) = delete;

  private:
    int number_;
    bool guarded_;
};

} // namespace

ubus_context *connect_to(const char *path) {
    DefaultSignal interrupt(SIGINT);
    DefaultSignal terminate(SIGTERM);
    DefaultSignal child(SIGCHLD);
    signal(SIGPIPE, SIG_IGN);
    return ubus_connect(path);
}

ubus_context *shared() {
    if (shared_connection == nullptr) shared_connection = connect_to(BUS_SOCKET);
    return shared_connection;
}

void drop_shared() {
    ubus_free(shared_connection);
    shared_connection = nullptr;
    object_ids.clear();
}

bool is_lost(const ubus_context *connection, int status) {
    return status == UBUS_STATUS_CONNECTION_FAILED ||
           (status == UBUS_STATUS_INVALID_ARGUMENT && connection->sock.eof);
}

int find_object(ubus_context *connection, const char *object, uint32_t *id) {
    if (connection != shared_connection) return ubus_lookup_id(connection, object, id);
    auto kept = object_ids.find(object);
    if (kept == object_ids.end()) return find_object_again(connection, object, id);
    *id = kept->second;
    return UBUS_STATUS_OK;
}

int find_object_again(ubus_context *connection, const char *object, uint32_t *id) {
    uint32_t found = 0; // stays 0 for an object that is there but cannot be called
    int status = ubus_lookup_id(connection, object, &found);
    if (status == UBUS_STATUS_OK && found == 0) status = UBUS_STATUS_NOT_FOUND;
    if (status == UBUS_STATUS_OK) *id = found;
    if (connection != shared_connection) return status;
    if (status == UBUS_STATUS_OK)
        object_ids[object] = found;
    else if (auto stale = object_ids.find(object); stale != object_ids.end())
        object_ids.erase(stale);
    return status;
}

} // namespace bus
