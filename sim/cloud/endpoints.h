// SPDX-License-Identifier: Apache-2.0
// What the server answers: to the signed requests, to downloads and to uploads.
#pragma once
#include "http_server.h"
#include "services.h"

namespace cloudsim {

// A request that reached an endpoint, and its answer as it comes about.
struct Visit {
    const httplib::Request &http;
    Request record;
    Fault fault; // the one that applies, or one that changes nothing
    int status = 200;
    std::string body;
    const char *type = "application/json";
};

// Runs an endpoint's own part between what all of them share: the fault is fetched before, and applied and
// the request recorded after it.
void attend(Services &services, const char *endpoint, const httplib::Request &request,
            httplib::Response &response, Exchange &exchange,
            const std::function<void(Services &, Visit &)> &answer);

void add_signed_endpoints(HttpServer &server,
                          Services &services); // JSON and multipart requests under /device-api
void add_transfers(HttpServer &server,
                   Services &services); // /firmware, /backup, /upload, and what is unknown

} // namespace cloudsim
