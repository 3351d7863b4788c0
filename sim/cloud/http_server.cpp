// SPDX-License-Identifier: Apache-2.0
#include "http_server.h"

#include "delivery.h"

namespace cloudsim {
namespace {

constexpr std::chrono::seconds keep_alive{5};

// The library's handlers see only request and response; what belongs to the exchange waits here meanwhile. A
// connection's requests are served by one thread, one after the other.
thread_local Exchange *current = nullptr;

// A request that announces no body has none (RFC 9112, 6.3); the library would wait for one until the peer
// closes.
void announce_body(httplib::Request &request) {
    if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding"))
        request.set_header("Content-Length", "0");
}

} // namespace

HttpServer::HttpServer(std::size_t max_body) {
    restore();
    set_payload_max_length(max_body);
    set_logger([this](const httplib::Request &request, const httplib::Response &response) {
        if (!current->routed && unrouted_) unrouted_(request, response);
    });
}

HttpServer::~HttpServer() = default;

void HttpServer::route(std::string_view method, const std::string &pattern, Handler handler) {
    auto call = [handler = std::move(handler)](const httplib::Request &request, httplib::Response &response) {
        current->routed = true;
        handler(request, response, *current);
    };
    if (method == "GET")
        Get(pattern, call);
    else if (method == "POST")
        Post(pattern, call);
    else if (method == "PUT")
        Put(pattern, call);
    else
        Delete(pattern, call);
}

void HttpServer::on_unrouted(Unrouted unrouted) {
    unrouted_ = std::move(unrouted);
}

void HttpServer::serve(Connection &connection) {
    while (connection.wait_request(keep_alive) && answer_one(connection)) {
    }
}

bool HttpServer::answer_one(Connection &connection) {
    Exchange exchange;
    current = &exchange;
    bool closing = false;
    bool readable = process_request(connection, false, closing, announce_body);
    current = nullptr;
    std::string answer = connection.take_answer();
    if (answer.empty() || !deliver(connection, answer, exchange.fault)) return false;
    if (readable && !closing) return true;
    connection.finish();
    return false;
}

} // namespace cloudsim
