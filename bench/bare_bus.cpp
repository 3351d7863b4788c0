// SPDX-License-Identifier: Apache-2.0
#include "bare_bus.h"

#include <cstdio>
#include <cstdlib>

#include "core/bus.h"
#include "core/bus_connection.h"
#include "core/bus_library.h"
#include "core/json_path.h"

namespace bench {

namespace {

[[noreturn]] void give_up(const char *what, const std::string &which) {
    fprintf(stderr, "qvtk_bench: %s %s\n", what, which.c_str());
    exit(1);
}

// A connection beside the agent's own.
ubus_context *connection() {
    static ubus_context *const opened = bus::connect_to(BUS_SOCKET);
    if (!opened) give_up("nobody serves", BUS_SOCKET);
    return opened;
}

void note_data(ubus_request *request, int, blob_attr *) {
    *static_cast<bool *>(request->priv) = true;
}

} // namespace

void BareCall::Free::operator()(blob_buf *message) const {
    blob_buf_free(message);
    delete message;
}

BareCall::BareCall(ubus_context *connection, const std::string &object, std::string method,
                   const std::string &arguments)
    : connection_(connection), method_(std::move(method)) {
    if (ubus_lookup_id(connection_, object.c_str(), &id_) != UBUS_STATUS_OK || id_ == 0)
        give_up("there is no object", object);
    if (arguments == "{}") return;
    message_.reset(new blob_buf{});
    blob_buf_init(message_.get(), 0);
    if (!blobmsg_add_json_from_string(message_.get(), arguments.c_str())) give_up("cannot send", arguments);
}

bool BareCall::operator()() const {
    bool answered = false;
    const int status = ubus_invoke(connection_, id_, method_.c_str(), message_ ? message_->head : nullptr,
                                   note_data, &answered, BUS_TIMEOUT_MILLIS);
    return status == UBUS_STATUS_OK && answered;
}

void BareCalls::add(const std::string &object, const std::string &method, const std::string &arguments) {
    calls_.emplace_back(connection(), object, method, arguments);
}

bool BareCalls::operator()() const {
    for (const BareCall &call : calls_)
        if (!call()) return false;
    return true;
}

BareCalls record_calls(const std::function<bool()> &work) {
    BareCalls calls;
    BareCalls clear;
    clear.add("sim", "clearcalls");
    if (!clear() || !work()) return calls;
    JsonRoot reply(_ubus_call("sim", "calls", nullptr));
    json_object *list = nullptr;
    if (JsonGetObj(reply.get(), "calls", &list) == 0) return calls;
    for (size_t i = 0; i < json_object_array_length(list); i++) {
        json_object *call = json_object_array_get_idx(list, i);
        json_object *arguments = nullptr;
        JsonGetObj(call, "arguments", &arguments);
        calls.add(_json_get_str(call, "object"), _json_get_str(call, "method"),
                  json_object_to_json_string_ext(arguments, JSON_C_TO_STRING_PLAIN));
    }
    return calls;
}

std::string router_value(const std::string &pointer) {
    BusMessage message;
    message.text("pointer", pointer.c_str());
    JsonRoot reply(_ubus_call("sim", "state", message.head()));
    json_object *value = nullptr;
    if (JsonGetObj(reply.get(), "value", &value) == 0) return "";
    return json_object_to_json_string_ext(value, JSON_C_TO_STRING_PLAIN);
}

bool set_router_value(const std::string &pointer, const std::string &json) {
    BusMessage message;
    message.text("pointer", pointer.c_str()).text("value", json.c_str());
    return set_dev_info("sim", "setstate", message) == 0;
}

} // namespace bench
