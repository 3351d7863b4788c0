// SPDX-License-Identifier: Apache-2.0
// A list of MQTT 5 properties that is released with its owner.
#pragma once

#include "calls.h"

#include <mosquitto.h>

class MqttProperties {
  public:
    MqttProperties() = default;
    ~MqttProperties() { mosquitto_property_free_all(&list_); }
    MqttProperties(const MqttProperties &) = delete;
    MqttProperties &operator=(const MqttProperties &) = delete;

    MqttProperties &integer(int identifier, uint32_t value);
    MqttProperties &bytes(int identifier, const std::string &value);
    MqttProperties &user(const char *name, const std::string &value);
    const mosquitto_property *get() const { return list_; }

  private:
    mosquitto_property *list_ = nullptr;
};

// The response topic and the correlation data of a request; empty where there is none.
ReplyTo read_reply_to(const mosquitto_property *properties);
