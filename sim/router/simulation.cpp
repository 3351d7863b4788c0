// SPDX-License-Identifier: Apache-2.0
// The object "sim": faults, changes of the world, and a look at the state. A real router has none.
#include "sim/router/world.h"

namespace router {
namespace {

constexpr int LONG = 65535;
constexpr Field FAULT[] = {required(text("kind", 1, LONG)), text("object", 1, 255),
                           text("method", 1, 255),          integer("value", -0x7fffffff, 0x7fffffff),
                           text("reply", 2, LONG),          integer("count", -1, 0x7fffffff)};
constexpr Field RESTART[] = {flag("bus")};
constexpr Field WAN[] = {required(choice("status", "up|down"))};
constexpr Field CABLE[] = {required(choice("status", "in|out"))};
constexpr Field STATION[] = {required(mac("mac")), required(choice("radio", "2.4G|5G|mesh|0|away")),
                             integer("count", 1, 1000)};
constexpr Field ELAPSE[] = {required(integer("seconds", 0, 0x7ffffff))};
constexpr Field POINTER[] = {text("pointer", 0, 1023)};
constexpr Field SET_STATE[] = {required(text("pointer", 1, 1023)), required(text("value", 1, LONG))};
constexpr Field CALLS[] = {text("object", 1, 255), text("method", 1, 255)};

std::string text_or(const Request &request, const char *name, const char *otherwise) {
    return member(request.arguments, name) ? text_of(request.arguments, name) : otherwise;
}

// What other commands throw at senseless arguments is a refusal on the bus.
template <typename Action>
JsonRoot attempt(const Action &action) {
    try {
        action();
    } catch (const Refused &) {
        throw;
    } catch (const std::runtime_error &error) {
        throw Refused(error.what());
    }
    return result();
}

JsonRoot add_fault(World &world, const Request &request) {
    return attempt([&] {
        Fault fault = parse_fault(text_of(request.arguments, "kind"));
        fault.object = text_or(request, "object", fault.object.c_str());
        fault.method = text_or(request, "method", fault.method.c_str());
        fault.reply = text_or(request, "reply", fault.reply.c_str());
        fault.value = integer_of(request.arguments, "value", fault.value);
        fault.count = integer_of(request.arguments, "count", fault.count);
        world.faults.add(fault);
        world.effects.republish();
    });
}

JsonRoot clear_faults(World &world, const Request &) {
    world.faults.clear();
    world.effects.republish();
    return result();
}

JsonRoot restart(World &world, const Request &request) {
    const bool bus = integer_of(request.arguments, "bus") != 0;
    world.effects.later(0, [&world, bus] { world.effects.restart(bus); }); // after this call's answer
    return result();
}

JsonRoot change_wan(World &world, const Request &request) {
    set_wan(world, text_of(request.arguments, "status") == "up");
    return result();
}

JsonRoot change_cable(World &world, const Request &request) {
    set_cable(world, text_of(request.arguments, "status") == "in");
    return result();
}

JsonRoot change_station(World &world, const Request &request) {
    const std::string radio = text_of(request.arguments, "radio");
    set_stations(world, text_of(request.arguments, "mac"), radio == "away" ? "" : radio,
                 integer_of(request.arguments, "count", 1));
    return result();
}

JsonRoot let_time_pass(World &world, const Request &request) {
    world.elapse(integer_of(request.arguments, "seconds"));
    return result();
}

JsonRoot show_state(World &world, const Request &request) {
    const std::string pointer = text_of(request.arguments, "pointer");
    if (pointer.empty()) return copy_json(world.state.root());
    json_object *value = world.state.find(pointer);
    if (!value) throw Refused("nothing at " + pointer);
    JsonRoot reply = new_object();
    put(reply.get(), "value", copy_json(value));
    return reply;
}

JsonRoot set_state(World &world, const Request &request) {
    return attempt([&] {
        world.state.set(text_of(request.arguments, "pointer"),
                        parse_json(text_of(request.arguments, "value")));
    });
}

JsonRoot show_calls(World &world, const Request &request) {
    const std::string object = text_or(request, "object", "*"), method = text_or(request, "method", "*");
    JsonRoot reply = new_object(), list(json_object_new_array());
    for (const Call &call : world.calls) {
        if (!glob(object, call.object) || !glob(method, call.method)) continue;
        JsonRoot row = new_object();
        put(row.get(), "object", call.object);
        put(row.get(), "method", call.method);
        put(row.get(), "arguments", parse_json(call.arguments));
        json_object_array_add(list.get(), row.release());
    }
    put(reply.get(), "calls", std::move(list));
    return reply;
}

JsonRoot clear_calls(World &world, const Request &) {
    world.calls.clear();
    return result();
}

constexpr Method ROWS[] = {
    {"sim", "fault", FAULT, add_fault,
     "kind no_reply, delay, result, absent, status, reply; object, method: globs"},
    {"sim", "clear", {}, clear_faults, "end all faults"},
    {"sim", "restart", RESTART, restart, "the daemon restarts with new object ids; bus 1: the bus as well"},
    {"sim", "wan", WAN, change_wan, "the Internet connection goes down or comes up"},
    {"sim", "cable", CABLE, change_cable, "the WAN cable is pulled or plugged in"},
    {"sim", "station", STATION, change_station,
     "a station comes, moves to another radio, or goes away; count: so many MACs in a row"},
    {"sim", "elapse", ELAPSE, let_time_pass, "that many seconds pass at once"},
    {"sim", "state", POINTER, show_state, "the whole state, or {\"value\": what is at the JSON pointer}"},
    {"sim", "setstate", SET_STATE, set_state,
     "put a value, given as JSON text, at a JSON pointer; unchecked"},
    {"sim", "calls", CALLS, show_calls, "the calls recorded, oldest first; object, method: globs"},
    {"sim", "clearcalls", {}, clear_calls, "forget them"},
};

} // namespace

Methods simulation_methods() {
    return ROWS;
}

} // namespace router
