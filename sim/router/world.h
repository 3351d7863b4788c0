// SPDX-License-Identifier: Apache-2.0
// The configuration daemon without a bus: state, methods, faults, recorded calls, and time. Not locked;
// whoever shares one between threads holds a lock around each call.
#pragma once

#include <deque>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "sim/router/faults.h"
#include "sim/router/router.h"
#include "sim/router/schema.h"
#include "sim/router/state.h"

namespace router {

class World;
struct Method;

struct Request {
    const Method &row;
    json_object *arguments; // an object that has passed check_arguments
};

// Carries a call out and gives its reply; throws Refused.
using Handler = JsonRoot (*)(World &world, const Request &request);

// One row per object and method: serves the publication on the bus, the dispatch, and routersim --list.
struct Method {
    const char *object;
    const char *name;
    Fields fields;
    Handler handler;
    const char *help;
    const char *place = nullptr; // where in the state it works; null: the member named like the object
    const char *key = nullptr;   // the reply's member; null: named like the object
};
using Methods = std::span<const Method>;

// All rows, in the order in which they are listed.
std::vector<Method> all_methods();

// What the daemon does to the bus that it is published on.
struct Effects {
    // Runs an action on the daemon's thread, some milliseconds later.
    std::function<void(int millis, std::function<void()> action)> later = [](int, const auto &action) {
        action();
    };
    // Gives all objects new ids; with drop_clients the bus goes down and up as well.
    std::function<void(bool drop_clients)> restart = [](bool) {};
    // The router restarts: its objects leave the bus, every client is dropped, and some milliseconds later
    // the objects are back with new ids.
    std::function<void(int millis)> boot = [](int) {};
    // The set of absent objects has changed.
    std::function<void()> republish = [] {};
};

class World {
  public:
    // The home of home.json, changed by a merge patch (RFC 7396).
    explicit World(const std::string &patch);

    // The row of a method; null when there is none.
    const Method *find(const std::string &object, const std::string &method) const;
    // Checks and carries out a call; a refusal is a reply too.
    JsonRoot call(const Method &row, json_object *arguments);
    void record(const Call &call);
    // Lets time go by.
    void elapse(int seconds);
    // The router restarts some milliseconds later: uptimes start again, the USB disk is mounted, a speed test
    // has ended, and it is away from the bus for /sim/boottime milliseconds.
    void restart_router(
        int delay_millis, const std::function<void()> &first = [] {});
    // Back to the state that it was made with, but for the members of the state that are kept.
    void restore_factory_state(std::span<const char *const> kept);

    const std::vector<Method> methods;
    State state;
    Faults faults;
    std::deque<Call> calls;
    Effects effects;

  private:
    std::string factory_state;
};

// Replies.
JsonRoot result(const char *value = "0");
JsonRoot named_reply(const Request &request, JsonRoot value);
JsonRoot reply_of_getby(const Request &request, JsonRoot found); // null: it found nothing

// Handlers that most objects share: the members at the row's place; stores the arguments there.
JsonRoot show(World &world, const Request &request);
JsonRoot store(World &world, const Request &request);

std::string place_of(const Method &row);
void store_at(World &world, const std::string &place, const Request &request);
// The value that a setting will have if the call succeeds.
std::string text_after(const World &world, const Request &request, const std::string &place,
                       const char *name);
int integer_after(const World &world, const Request &request, const std::string &place, const char *name);

// Index in an array at a place of the first element whose member has the value; -1 when there is none.
int index_of(json_object *array, const char *name, int value);
int index_of_mac(json_object *array, const std::string &mac);
// The place of an array's element, "" for index -1; what stands there, null for "".
std::string place_at(const std::string &array, int index);
JsonRoot view_at(const World &world, const std::string &place);
// One more than the highest number that the array's elements have as that member, at least `first`.
int next_number(json_object *array, const char *name, int first);

// The subjects. Each file gives its rows.
Methods identity_methods();
Methods iptv_methods();
Methods wifi_methods();
Methods apclient_methods();
Methods guest_methods();
Methods wan_methods();
Methods timer_methods();
Methods station_methods();
Methods filter_methods();
Methods parental_methods();
Methods rule_methods();
Methods diagnosis_methods();
Methods traffic_methods();
Methods firmware_methods();
Methods neighbour_methods();
Methods hardware_methods();
Methods simulation_methods();

// What the router's clock says.
struct WallTime {
    int weekday; // 0 is Sunday
    int second;  // of the day
};
WallTime wall_time(const World &world);
WallTime wall_time(int seconds); // since the epoch

// A number of seconds and some more, at most as many as an int holds.
int advance(int value, int seconds);

// What time does to a subject.
void elapse_clock(World &world, int seconds);
void carry_out_tasks(World &world, int from, int to); // those due after `from`, up to `to`
void elapse_guests(World &world, int seconds);
void elapse_stations(World &world, int seconds);
void elapse_disconnections(World &world, int seconds);
void elapse_speed_test(World &world, int seconds);

// The stations of a network on a radio are now in the network of another name.
void rename_network(World &world, const std::string &radio, const std::string &ssid,
                    const std::string &new_ssid);

// Changes of the world; throw Refused when they make no sense.
void set_wan(World &world, bool up);
void set_cable(World &world, bool in);
void set_station(World &world, const std::string &mac, const std::string &radio);
// The same of `count` stations whose MACs follow one another.
void set_stations(World &world, const std::string &mac, const std::string &radio, int count);

// Who is let into the networks: the reasons not to, and what follows from them. World sees to it after every
// call and whenever time goes by.
bool is_filtered(const World &world, const std::string &mac);
bool is_disconnected(const World &world, const std::string &mac);
bool is_out_of_hours(const World &world, const std::string &mac); // supervised, and outside its time windows
bool is_outside_windows(const World &world, const std::string &mac); // has time rules, and none of them fits
bool is_kept_out(const World &world, const std::string &mac);
void enforce_access(World &world);
void forget_kept_out(World &world, const std::string &mac); // it went by itself, and does not come back so

} // namespace router
