// SPDX-License-Identifier: Apache-2.0
// Serves the cloud's requests from the agent's tables, on threads of its own: property requests, service
// calls and upgrades do not wait for each other.
#pragma once

#include "calls.h"
#include "housekeeper.h"
#include "link.h"
#include "record.h"
#include "worker_pool.h"

class Dispatcher {
  public:
    Dispatcher(const Record &record, Link &link, Calls &calls, Housekeeper &housekeeper)
        : record_(record), link_(link), calls_(calls), housekeeper_(housekeeper) {}

    // `topic` is what follows the device's prefix. Answers or queues the request; never blocks. The link's
    // thread.
    void submit(const std::string &topic, std::string payload, ReplyTo reply);

  private:
    enum class Kind { none, get, set, service, upgrade };
    struct Request {
        Kind kind = Kind::none;
        std::string name;
        std::string payload;
        ReplyTo reply;
    };

    static Request read_topic(const std::string &topic);
    WorkerPool &pool_for(Kind kind);
    void refuse(const Request &request, int service_code, const char *message);
    void serve(const Request &request);
    void serve_get(const Request &request);
    void serve_set(const Request &request);
    void serve_call(const Request &request);
    void serve_upgrade(const Request &request);

    const Record &record_;
    Link &link_;
    Calls &calls_;
    Housekeeper &housekeeper_;
    WorkerPool properties_{2, 64};
    WorkerPool services_{4, 64};
    WorkerPool upgrades_{1, 4};
};
