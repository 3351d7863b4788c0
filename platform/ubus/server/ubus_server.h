// SPDX-License-Identifier: Apache-2.0
// A small bus: the broker and, in the same process, the owners of its objects. It answers lookups, calls and
// pings; objects of clients, events, subscriptions and monitoring it refuses with status 1. It serves
// simulations and tests, built on the blob, blobmsg and uloop functions, so either bus library will do.
//
// The whole server works on the thread that is in run(), which runs uloop, so that a process has one at work
// at a time. Handlers, timers and posted functions are called there, and there (but for the timers also
// before run()) everything else here is to be called, but for stop() and post(), which are for any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

extern "C" {
#include <libubox/blobmsg_json.h>
}
// Common words that the bus headers turn into macros, in the way of C++ headers included after this one.
#undef __constructor
#undef fallthrough

struct UbusMethod {
    std::string name;
    std::vector<std::pair<std::string, int>> arguments; // name, BLOBMSG_TYPE_...; listed, not enforced
};

class Broker;

// A call that waits for its answer. Copies stand for the same call. The answer may be given at once or at any
// later time on the server's thread; the first finish wins, what comes after it or after the caller has gone
// is dropped. A call never finished is never answered.
class UbusInvocation {
  public:
    const std::string &object() const; // path
    const std::string &method() const;
    const std::string &json() const; // the arguments, "{}" when there are none

    void reply(const std::string &json) const; // data(json), finish(0); 9 when the text is no JSON object
    void status(int code) const { finish(code); }
    bool data(const std::string &json) const; // one DATA; false if the text is no JSON object or too long
    void finish(int code) const;              // the STATUS

  private:
    friend class Broker;
    struct Call;
    std::shared_ptr<Call> call;
};

class UbusServer {
  public:
    using Handler = std::function<void(UbusInvocation)>;

    UbusServer();
    ~UbusServer(); // closes clients and listener, removes the socket
    UbusServer(const UbusServer &) = delete;
    UbusServer &operator=(const UbusServer &) = delete;

    // Binds the socket, replacing one that nobody listens on any more, but no other file. Throws
    // std::system_error. While a server runs this is not to be called.
    void listen(const std::string &path);
    // Closes the listener and removes the socket: as if the bus were gone, once drop_clients() has been
    // called too.
    void close_listener();

    // Publishes an object and returns its id; 0 if the path is taken or empty. Calls of methods that are not
    // in the list are answered with status 3 and do not reach the handler; an empty list lets every method
    // through.
    uint32_t add_object(const std::string &path, std::vector<UbusMethod> methods, Handler handler);
    bool remove_object(const std::string &path);
    uint32_t object_id(const std::string &path) const; // 0: unknown
    // Gives all objects new ids, as a restarted daemon would.
    void renumber();
    // Closes all connections.
    void drop_clients();

    // Serves until stop(), which also ends the timers and the clients. May be called again afterwards.
    void run();
    void stop();
    // Has the function called soon.
    void post(std::function<void()> function);

    // Has the function called once in so many milliseconds.
    void after(int milliseconds, std::function<void()> function);

  private:
    struct State;
    std::unique_ptr<State> state;
};
