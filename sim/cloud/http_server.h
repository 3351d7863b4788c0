// SPDX-License-Identifier: Apache-2.0
// The HTTP library's request parser and router on our own connections, so that the answer's delivery is ours.
#pragma once
#include "cloud.h"
#include "connection.h"
#include <csignal>

namespace cloudsim {

// What a handler decides beside the answer.
struct Exchange {
    std::optional<Fault> fault; // applied to the delivery
    bool routed = false;        // set by the server before it calls a handler
};

// What the process does on SIGPIPE, kept over the making of a library server, which changes it for everybody.
class KeptSigpipe {
  protected:
    KeptSigpipe() { sigaction(SIGPIPE, nullptr, &before_); }
    void restore() const { sigaction(SIGPIPE, &before_, nullptr); }

  private:
    struct sigaction before_ {};
};

class HttpServer : private KeptSigpipe, private httplib::Server {
  public:
    using Handler = std::function<void(const httplib::Request &, httplib::Response &, Exchange &)>;
    using Unrouted = std::function<void(const httplib::Request &, const httplib::Response &)>;

    // Bodies above `max_body` bytes are answered with 413.
    explicit HttpServer(std::size_t max_body);
    ~HttpServer() override;

    // Before serve(): `pattern` is a regular expression for the whole path; `method` is GET, POST, PUT or
    // DELETE.
    void route(std::string_view method, const std::string &pattern, Handler handler);
    void on_unrouted(Unrouted unrouted); // called for each request that reached no handler

    // Answers the requests of one connection until it ends. Several threads may serve connections of their
    // own.
    void serve(Connection &connection);

  private:
    bool answer_one(Connection &connection);
    Unrouted unrouted_;
};

} // namespace cloudsim
