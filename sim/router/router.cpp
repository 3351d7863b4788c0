// SPDX-License-Identifier: Apache-2.0
#include "sim/router/router.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <future>
#include <mutex>
#include <set>
#include <thread>

#include <ubusmsg.h>

#include "platform/ubus/server/ubus_server.h"
#include "sim/router/world.h"

namespace router {
namespace {

constexpr char SIMULATION[] = "sim";
constexpr int TICK_MILLIS = 1000;

// Keeps the processor busy, as a daemon does that works its answer out.
void work(std::chrono::microseconds duration) {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) {
    }
}

std::vector<UbusMethod> signatures(const World &world, const std::string &object) {
    std::vector<UbusMethod> methods;
    for (const Method &row : world.methods) {
        if (object != row.object) continue;
        UbusMethod &method = methods.emplace_back(UbusMethod{row.name, {}});
        for (const Field &field : row.fields)
            method.arguments.emplace_back(field.name, bus_type(field));
    }
    return methods;
}

} // namespace

struct Router::Body {
    explicit Body(const std::string &patch);
    ~Body() { stop(); }

    void start(const std::string &path);
    void stop();
    void republish();
    // While the router is away its objects are not on the bus, but for the simulation's own.
    void set_away(bool now) {
        away = now;
        republish();
    }
    void handle(const UbusInvocation &invocation);
    void answer(const UbusInvocation &invocation, const Mishap &mishap, const std::string &reply) const;
    // Runs an action under the lock that nobody has called for; what it throws is printed.
    void by_itself(const std::function<void()> &action);
    void tick();
    // Runs an action under the lock, on the server's thread, and waits for it; here if no server runs.
    void on_server(const std::function<void()> &action);
    // Runs an action under the lock and wakes who waits for a change.
    template <typename Action>
    auto locked(const Action &action) {
        std::unique_lock lock(mutex);
        changed.notify_all();
        return action();
    }
    template <typename Look>
    auto look(const Look &at) {
        std::unique_lock lock(mutex);
        return at();
    }
    bool wait(std::chrono::milliseconds limit, const std::function<bool()> &condition) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, limit, condition);
    }

    std::recursive_mutex mutex; // of the world
    std::condition_variable_any changed;
    World world;
    bool clock_runs = false;
    bool away = false;
    std::unique_ptr<UbusServer> server;
    std::thread thread;
    std::atomic<std::thread::id> server_thread;
};

Router::Body::Body(const std::string &patch) : world(patch) {
    world.effects.later = [this](int millis, const std::function<void()> &action) {
        if (!server) return action();
        server->post(
            [this, millis, action] { server->after(millis, [this, action] { by_itself(action); }); });
    };
    world.effects.restart = [this](bool drop_clients) {
        if (!server) return;
        server->post([this, drop_clients] {
            server->renumber();
            if (drop_clients) server->drop_clients();
        });
    };
    world.effects.boot = [this](int millis) {
        if (!server) return;
        server->post([this, millis] {
            locked([this] { set_away(true); });
            server->drop_clients();
            server->after(millis, [this] { locked([this] { set_away(false); }); });
        });
    };
    world.effects.republish = [this] {
        if (server && std::this_thread::get_id() == server_thread)
            republish();
        else if (server)
            server->post([this] { locked([this] { republish(); }); });
    };
}

void Router::Body::start(const std::string &path) {
    if (server) throw std::runtime_error("the router runs already");
    server = std::make_unique<UbusServer>();
    republish();
    try {
        server->listen(path);
    } catch (...) {
        server.reset();
        throw;
    }
    if (clock_runs) server->post([this] { server->after(TICK_MILLIS, [this] { tick(); }); });
    thread = std::thread([this] {
        server_thread = std::this_thread::get_id();
        server->run();
    });
}

void Router::Body::stop() {
    if (!server) return;
    server->stop();
    thread.join();
    server.reset();
}

// Puts on the bus what is to be there, and takes away what is not.
void Router::Body::republish() {
    std::set<std::string> objects;
    for (const Method &row : world.methods)
        objects.insert(row.object);
    for (const std::string &object : objects) {
        const bool wanted = object == SIMULATION || (!away && !world.faults.absent(object));
        if (wanted && server->object_id(object) == 0)
            server->add_object(object, signatures(world, object),
                               [this](const UbusInvocation &invocation) { handle(invocation); });
        else if (!wanted)
            server->remove_object(object);
    }
}

void Router::Body::handle(const UbusInvocation &invocation) {
    const std::string &object = invocation.object(), &method = invocation.method();
    std::unique_lock lock(mutex);
    Mishap mishap;
    if (object != SIMULATION) {
        world.record({object, method, invocation.json()});
        mishap = world.faults.strike(object, method);
        work(std::chrono::microseconds(world.state.integer("/sim/answertime")));
    }
    const bool carried_out = !mishap.fault || mishap.fault->kind == Fault::Kind::NoReply;
    std::string reply;
    try {
        JsonRoot arguments = parse_json(invocation.json());
        if (carried_out) reply = json_text(world.call(*world.find(object, method), arguments.get()).get());
    } catch (const std::exception &) {
        mishap.fault = Fault{.kind = Fault::Kind::Status, .value = UBUS_STATUS_UNKNOWN_ERROR};
    }
    changed.notify_all();
    if (mishap.delay_millis == 0) return answer(invocation, mishap, reply);
    server->after(mishap.delay_millis,
                  [this, invocation, mishap, reply] { answer(invocation, mishap, reply); });
}

void Router::Body::answer(const UbusInvocation &invocation, const Mishap &mishap,
                          const std::string &reply) const {
    if (!mishap.fault) return invocation.reply(reply);
    const Fault &fault = *mishap.fault;
    if (fault.kind == Fault::Kind::Result)
        invocation.reply(json_text(result(std::to_string(fault.value).c_str()).get()));
    else if (fault.kind == Fault::Kind::Status)
        invocation.status(fault.value);
    else if (fault.kind == Fault::Kind::Reply)
        invocation.reply(fault.reply);
}

// A state that was set to what makes no sense must not end the server.
void Router::Body::by_itself(const std::function<void()> &action) {
    try {
        locked(action);
    } catch (const std::exception &error) {
        fprintf(stderr, "router: %s\n", error.what());
    }
}

void Router::Body::tick() {
    by_itself([this] { world.elapse(1); });
    server->after(TICK_MILLIS, [this] { tick(); });
}

void Router::Body::on_server(const std::function<void()> &action) {
    if (!server) return locked(action);
    std::promise<void> done;
    server->post([&] {
        locked(action);
        done.set_value();
    });
    done.get_future().wait();
}

Router::Router(const std::string &patch) : body(std::make_unique<Body>(patch)) {}

Router::~Router() = default;

void Router::start(const std::string &socket_path) {
    body->start(socket_path);
}

void Router::stop() {
    body->stop();
}

std::string Router::state() const {
    return body->look([this] { return json_text(body->world.state.root()); });
}

std::string Router::value(const std::string &pointer) const {
    return body->look([&] {
        json_object *value = body->world.state.find(pointer);
        return value ? json_text(value) : "";
    });
}

void Router::set_state(const std::string &pointer, const std::string &json) {
    body->locked([&] { body->world.state.set(pointer, parse_json(json)); });
}

void Router::erase_state(const std::string &pointer) {
    body->locked([&] { body->world.state.erase(pointer); });
}

std::string Router::call(const std::string &object, const std::string &method, const std::string &arguments) {
    return body->locked([&]() -> std::string {
        const Method *row = body->world.find(object, method);
        return row ? json_text(body->world.call(*row, parse_json(arguments).get()).get()) : "";
    });
}

std::vector<Call> Router::calls(const std::string &object, const std::string &method) const {
    return body->look([&] {
        std::vector<Call> matching;
        for (const Call &call : body->world.calls)
            if (glob(object, call.object) && glob(method, call.method)) matching.push_back(call);
        return matching;
    });
}

void Router::clear_calls() {
    body->locked([this] { body->world.calls.clear(); });
}

bool Router::wait_for_calls(std::size_t count, const std::string &object, const std::string &method,
                            std::chrono::milliseconds limit) const {
    return body->wait(limit, [&] { return calls(object, method).size() >= count; });
}

bool Router::wait_for_state(const std::string &pointer, const std::string &json,
                            std::chrono::milliseconds limit) const {
    JsonRoot expected = parse_json(json);
    return body->wait(
        limit, [&] { return json_object_equal(body->world.state.find(pointer), expected.get()) != 0; });
}

void Router::add_fault(const Fault &fault) {
    body->locked([&] { body->world.faults.add(fault); });
    body->on_server([this] { body->world.effects.republish(); });
}

void Router::clear_faults() {
    body->locked([this] { body->world.faults.clear(); });
    body->on_server([this] { body->world.effects.republish(); });
}

void Router::restart(bool drop_clients) {
    body->on_server([this, drop_clients] { body->world.effects.restart(drop_clients); });
    body->on_server([] {}); // the restart was posted, and has happened when this returns
}

void Router::wan(bool up) {
    body->locked([&] { set_wan(body->world, up); });
}

void Router::cable(bool in) {
    body->locked([&] { set_cable(body->world, in); });
}

void Router::station(const std::string &mac, const std::string &radio, int count) {
    body->locked([&] { set_stations(body->world, mac, radio, count); });
}

void Router::elapse(int seconds) {
    body->locked([&] { body->world.elapse(seconds); });
}

void Router::run_clock() {
    body->locked([this] { body->clock_runs = true; });
}

} // namespace router
