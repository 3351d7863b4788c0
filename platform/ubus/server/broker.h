// SPDX-License-Identifier: Apache-2.0
// What the broker answers to each message.
#pragma once

#include "bus_client.h"
#include "object_table.h"

class Broker {
  public:
    explicit Broker(ObjectTable *objects) : objects_(objects) {}

    void handle(const std::shared_ptr<BusClient> &client, const wire::Message &message);

  private:
    void lookup(BusClient *client, const wire::Message &message);
    void invoke(const std::shared_ptr<BusClient> &client, const wire::Message &message);

    ObjectTable *objects_;
};
