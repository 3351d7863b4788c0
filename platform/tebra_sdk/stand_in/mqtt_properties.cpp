// SPDX-License-Identifier: Apache-2.0
#include "mqtt_properties.h"

#include <cstdlib>
#include <mqtt_protocol.h>

MqttProperties &MqttProperties::integer(int identifier, uint32_t value) {
    mosquitto_property_add_int32(&list_, identifier, value);
    return *this;
}

MqttProperties &MqttProperties::bytes(int identifier, const std::string &value) {
    mosquitto_property_add_binary(&list_, identifier, value.data(), static_cast<uint16_t>(value.size()));
    return *this;
}

MqttProperties &MqttProperties::user(const char *name, const std::string &value) {
    mosquitto_property_add_string_pair(&list_, MQTT_PROP_USER_PROPERTY, name, value.c_str());
    return *this;
}

ReplyTo read_reply_to(const mosquitto_property *properties) {
    ReplyTo reply;
    char *topic = nullptr;
    if (mosquitto_property_read_string(properties, MQTT_PROP_RESPONSE_TOPIC, &topic, false) && topic)
        reply.topic = topic;
    free(topic);
    void *correlation = nullptr;
    uint16_t length = 0;
    if (mosquitto_property_read_binary(properties, MQTT_PROP_CORRELATION_DATA, &correlation, &length,
                                       false) &&
        correlation)
        reply.correlation.assign(static_cast<const char *>(correlation), length);
    free(correlation);
    return reply;
}
