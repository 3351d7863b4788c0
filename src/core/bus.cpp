// SPDX-License-Identifier: Apache-2.0
#include "core/bus.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <optional>

#include "core/bus_connection.h"
#include "core/bus_library.h"
#include "core/bus_reply.h"
#include "core/clock.h"
#include "core/time_limit.h"

FairMutex ubus_mutex;

namespace {

constexpr char DAEMON[] = "vrop";
constexpr size_t SENT_AT_ONCE = 65536; // bytes that a socket takes while the other end reads

bool unanswered = false; // the last call got no answer in time

// What one attempt at a call came to.
struct Outcome {
    const char *step; // the library function that failed, null after success
    int status;
    bool unsent; // the connection was lost before the daemon can have seen the request
    JsonRoot reply;
};

void take_reply(ubus_request *request, int, blob_attr *message) {
    *static_cast<JsonRoot *>(request->priv) = bus::reply_document(message);
}

int invoke(ubus_context *connection, uint32_t id, const char *method, blob_attr *message, JsonRoot *reply) {
    reply->reset();
    // the library limits its wait for the answer, but not that for a bus that has stopped reading
    std::optional<TimeLimit> limit;
    if (unanswered || (message != nullptr && blob_pad_len(message) > SENT_AT_ONCE))
        limit.emplace(connection->sock.fd, BUS_SEND_MILLIS);
    int status = ubus_invoke(connection, id, method, message, take_reply, reply, BUS_TIMEOUT_MILLIS);
    // ended here rather than found dead, so that it is not made once more
    if (status != UBUS_STATUS_OK && limit && TimeLimit::over()) status = UBUS_STATUS_TIMEOUT;
    unanswered = status == UBUS_STATUS_TIMEOUT;
    return status;
}

Outcome attempt(ubus_context *connection, const char *object, const char *method, blob_attr *message) {
    uint32_t id = 0;
    JsonRoot reply;
    int status = bus::find_object(connection, object, &id);
    if (status != UBUS_STATUS_OK)
        return {"ubus_lookup_id", status, status != UBUS_STATUS_TIMEOUT && bus::is_lost(connection, status),
                nullptr};

    status = invoke(connection, id, method, message, &reply);
    uint32_t renewed = id;
    // a daemon that was restarted has other ids; the same id means that the answer is the daemon's own
    if (status == UBUS_STATUS_NOT_FOUND &&
        bus::find_object_again(connection, object, &renewed) == UBUS_STATUS_OK && renewed != id)
        status = invoke(connection, renewed, method, message, &reply);
    if (status == UBUS_STATUS_OK) return {nullptr, status, false, std::move(reply)};
    // lost while waiting, the request may have been carried out: it must not be sent twice
    bool unsent = status == UBUS_STATUS_INVALID_ARGUMENT && bus::is_lost(connection, status);
    return {"ubus_invoke", status, unsent, nullptr};
}

void print_failure(const Outcome &outcome, const char *object, const char *method) {
    if (outcome.step != nullptr)
        printf("%s failed '%s' '%s' %s\n", outcome.step, object, method, ubus_strerror(outcome.status));
}

// One attempt over the shared connection, which is closed when it turns out to be dead.
Outcome attempt_shared(const char *object, const char *method, blob_attr *message) {
    ubus_context *connection = bus::shared();
    if (connection == nullptr) return {"ubus_connect", UBUS_STATUS_CONNECTION_FAILED, false, nullptr};
    Outcome outcome = attempt(connection, object, method, message);
    if (outcome.step != nullptr && bus::is_lost(connection, outcome.status)) bus::drop_shared();
    return outcome;
}

bool daemon_is_present() {
    std::lock_guard lock(ubus_mutex);
    ubus_context *connection = bus::shared();
    bool present = false;
    const int status = connection ? bus::find_any(connection, DAEMON, &present) : UBUS_STATUS_OK;
    if (connection && bus::is_lost(connection, status)) bus::drop_shared();
    return present;
}

void print_completion(ubus_request *request, int status) {
    printf("completed request (p: 0x%x, s: %u), ret: %d\n", request->peer, request->seq, status);
    delete request;
}

} // namespace

ubus_context *ubus_init(int add_to_loop) {
    std::unique_lock lock(ubus_mutex);
    ubus_context *connection = bus::shared();
    while (connection == nullptr) {
        lock.unlock();
        pause_seconds(1);
        lock.lock();
        connection = bus::shared();
    }
    if (add_to_loop != 0) ubus_add_uloop(connection);
    return connection;
}

void ubus_done() {
    std::lock_guard lock(ubus_mutex);
    bus::drop_shared();
}

void ubus_wait_daemon() {
    if (daemon_is_present()) return;
    do
        pause_seconds(1);
    while (!daemon_is_present());
    pause_seconds(1); // a daemon that has just come publishes its objects one after another
}

json_object *_ubus_call(const char *object, const char *method, blob_attr *message) {
    if (strstr(object, "ctcapd") != nullptr) printf("'%s' '%s'\n", object, method);
    Outcome outcome = attempt_shared(object, method, message);
    if (outcome.unsent) outcome = attempt_shared(object, method, message);
    print_failure(outcome, object, method);
    return outcome.reply.release();
}

json_object *_ubus_call_(ubus_context *connection, const char *object, const char *method,
                         blob_attr *message) {
    Outcome outcome = attempt(connection, object, method, message);
    print_failure(outcome, object, method);
    return outcome.reply.release();
}

json_object *_ubus_call_r(const char *object, const char *method, blob_attr *message) {
    ubus_context *connection = bus::connect_to(nullptr);
    if (connection == nullptr) {
        printf("ubus_connect failed\n");
        return nullptr;
    }
    json_object *reply = _ubus_call_(connection, object, method, message);
    ubus_free(connection);
    return reply;
}

int _ubus_call_async(const char *object, const char *method, blob_attr *message) {
    ubus_context *connection = bus::shared();
    if (connection == nullptr) return UBUS_STATUS_CONNECTION_FAILED;
    uint32_t id = 0;
    int status = bus::find_object(connection, object, &id);
    std::unique_ptr<ubus_request> request(new (std::nothrow) ubus_request{});
    if (status == UBUS_STATUS_OK && !request) status = UBUS_STATUS_NO_MEMORY;
    if (status == UBUS_STATUS_OK) status = ubus_invoke_async(connection, id, method, message, request.get());
    if (status != UBUS_STATUS_OK) return status;
    request->complete_cb = print_completion;
    ubus_complete_request_async(connection, request.release());
    return UBUS_STATUS_OK;
}
