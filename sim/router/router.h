// SPDX-License-Identifier: Apache-2.0
// A simulated home router on the bus: the broker and the configuration daemon with all its objects, in one
// object that a test starts in its own process and that the program routersim runs as a process.
//
//     router::Router router;                              // the home of home.json
//     router.start();                                     // serves DEFAULT_SOCKET on a thread of its own
//     router.set_state("/vrop.ftinfo/sn", "\"\"");         // a JSON pointer (RFC 6901), the value as JSON
//     router.add_fault({.kind = router::Fault::Kind::Result, .object = "vrop.wifi*", .value = 2});
//     ...
//     EXPECT_EQ(router.value("/vrop.ledswitch/status"), "\"off\"");
//     EXPECT_EQ(router.calls("vrop.ledswitch", "set").at(0).arguments, R"({"status":"off"})");
//
// The state is one JSON object with a member per bus object. A fact that several objects show stands in one
// of them, and a pointer through any of them reaches it: /vrop.webwifisimple/wifi24ssid is
// /vrop.wifi.1.ap/0/ssid.
//
// Every function may be called from any thread, but start() and stop() not at once with others. Errors
// (broken JSON, a pointer that leads nowhere, a socket that cannot be bound) are thrown as
// std::runtime_error.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace router {

inline constexpr char DEFAULT_SOCKET[] = "/apvar/run/ubus/ubus.sock";

// The state that the program has built in (home.json).
std::string home_state();

// A call that reached the daemon; arguments as compact JSON, members in the order in which they were sent.
struct Call {
    std::string object, method, arguments;
};

// What goes wrong with the calls whose object and method match the two glob patterns. The first fault added
// that matches counts, save that a delay and another fault both apply.
struct Fault {
    enum class Kind {
        NoReply, // the call is carried out, its reply is lost
        Delay,   // the call is carried out and answered `value` milliseconds late
        Result,  // refused: {"result": "value"}, nothing changes
        Absent,  // the objects are not on the bus; `method` and `count` do not matter
        Status,  // the bus answers with ubus status `value` and no data, nothing changes
        Reply,   // answered with the JSON object `reply` as it stands, nothing changes
    };
    Kind kind = Kind::NoReply;
    std::string object = "*";
    std::string method = "*";
    int value = 0;
    std::string reply = "{}";
    int count = -1; // how many calls it hits; -1: until it is cleared
};

class Router {
  public:
    // Starts from home_state(), changed by a merge patch (RFC 7396): members given replace, null removes.
    explicit Router(const std::string &patch = {});
    ~Router(); // stops
    Router(const Router &) = delete;
    Router &operator=(const Router &) = delete;

    // Makes the socket (and removes a leftover one) and serves it until stop(), which drops every client. May
    // be started again after a stop; state, faults and recorded calls last.
    void start(const std::string &socket_path = DEFAULT_SOCKET);
    void stop();

    // The whole state as JSON text; one value of it, "" when there is none.
    std::string state() const;
    std::string value(const std::string &pointer) const;
    // Puts a value, unchecked; missing members on the way are not made. Removes one.
    void set_state(const std::string &pointer, const std::string &json);
    void erase_state(const std::string &pointer);

    // Makes one call as if it came over the bus, without faults and unrecorded; gives the reply as JSON text,
    // "" when the object or method does not exist.
    std::string call(const std::string &object, const std::string &method,
                     const std::string &arguments = "{}");

    // The calls that came over the bus, oldest first (the last 4096), but those to the object "sim".
    std::vector<Call> calls(const std::string &object = "*", const std::string &method = "*") const;
    void clear_calls();

    // Wait until as many matching calls have come, or until the value at a pointer is the given JSON; false
    // when the limit passes first.
    bool wait_for_calls(std::size_t count, const std::string &object = "*", const std::string &method = "*",
                        std::chrono::milliseconds limit = std::chrono::seconds(10)) const;
    bool wait_for_state(const std::string &pointer, const std::string &json,
                        std::chrono::milliseconds limit = std::chrono::seconds(10)) const;

    void add_fault(const Fault &fault);
    void clear_faults();

    // The daemon restarts: every object gets a new id. With drop_clients the bus restarts with it.
    void restart(bool drop_clients = false);

    // Changes of the world. A station comes to, or moves to, radio "2.4G", "5G", "mesh" or "0" (cable), and
    // goes with "". A MAC that the router does not know yet is given a name and an address. One that is kept
    // out by filter or disconnection cannot come. With a count, so many MACs in a row.
    void wan(bool up);
    void cable(bool in);
    void station(const std::string &mac, const std::string &radio, int count = 1);
    // Time goes by: uptimes rise, guest access and disconnections run out, scheduled tasks are carried out.
    void elapse(int seconds);
    // Lets time go by itself, from the next start() on.
    void run_clock();

  private:
    struct Body;
    std::unique_ptr<Body> body;
};

} // namespace router
