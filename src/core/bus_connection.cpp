// SPDX-License-Identifier: Apache-2.0
#include "core/bus_connection.h"

#include <csignal>
#include <map>
#include <string>

#include "core/bus.h"
#include "core/bus_library.h"
#include "core/time_limit.h"

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

// The library waits for ever.
int look_up(ubus_context *connection, const char *path, ubus_lookup_handler_t take, void *found) {
    TimeLimit limit(connection->sock.fd, BUS_LOOKUP_MILLIS);
    const int status = ubus_lookup(connection, path, take, found);
    return TimeLimit::over() ? UBUS_STATUS_TIMEOUT : status;
}

void take_id(ubus_context *, ubus_object_data *object, void *id) {
    *static_cast<uint32_t *>(id) = object->id;
}

// A name that is looked for, also as the start of others.
struct Family {
    std::string name;
    bool found = false;
};

void note_member(ubus_context *, ubus_object_data *object, void *priv) {
    auto *family = static_cast<Family *>(priv);
    const std::string path = object->path;
    if (path == family->name || path.starts_with(family->name + ".")) family->found = true;
}

} // namespace

ubus_context *connect_to(const char *path) {
    DefaultSignal interrupt(SIGINT);
    DefaultSignal terminate(SIGTERM);
    DefaultSignal child(SIGCHLD);
    signal(SIGPIPE, SIG_IGN);
    TimeLimit limit(-1, BUS_CONNECT_MILLIS);
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
    return status == UBUS_STATUS_CONNECTION_FAILED || (status != UBUS_STATUS_OK && connection->sock.eof);
}

int find_any(ubus_context *connection, const char *name, bool *found) {
    Family family{name};
    const int status = look_up(connection, (family.name + "*").c_str(), note_member, &family);
    *found = family.found;
    return status;
}

int find_object(ubus_context *connection, const char *object, uint32_t *id) {
    if (connection != shared_connection) return look_up(connection, object, take_id, id);
    auto kept = object_ids.find(object);
    if (kept == object_ids.end()) return find_object_again(connection, object, id);
    *id = kept->second;
    return UBUS_STATUS_OK;
}

int find_object_again(ubus_context *connection, const char *object, uint32_t *id) {
    uint32_t found = 0; // stays 0 for an object that is there but cannot be called
    int status = look_up(connection, object, take_id, &found);
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
