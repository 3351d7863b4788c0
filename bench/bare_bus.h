// SPDX-License-Identifier: Apache-2.0
// Calls of the router's daemon with nothing around them: the object looked up once, the message built once,
// the reply received and dropped. And the router as a benchmark needs it. One thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct ubus_context;
struct blob_buf;

namespace bench {

class BareCall {
  public:
    // `arguments` is a JSON object; nothing is sent for an empty one. Ends the process when the object does
    // not exist.
    BareCall(ubus_context *connection, const std::string &object, std::string method,
             const std::string &arguments);
    // True when the daemon has answered with data.
    bool operator()() const;

  private:
    struct Free {
        void operator()(blob_buf *message) const;
    };
    ubus_context *connection_;
    uint32_t id_ = 0;
    std::string method_;
    std::unique_ptr<blob_buf, Free> message_; // null: no arguments
};

// A list of them, made in order.
class BareCalls {
  public:
    void add(const std::string &object, const std::string &method, const std::string &arguments = "{}");
    bool operator()() const; // all; false as soon as one fails
    bool empty() const { return calls_.empty(); }

  private:
    std::vector<BareCall> calls_;
};

// The calls that reach the daemon while `work` runs, to be made bare. Empty when it fails.
BareCalls record_calls(const std::function<bool()> &work);

// One value of the simulated router's state, as JSON text; "" when there is none.
std::string router_value(const std::string &pointer);
bool set_router_value(const std::string &pointer, const std::string &json);

} // namespace bench
