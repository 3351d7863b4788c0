// SPDX-License-Identifier: Apache-2.0
#include "support/mqtt/client.h"

#include <algorithm>
#include <cstdlib>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <unistd.h>

namespace test_mqtt {

namespace {

constexpr int QOS = 1;
constexpr int CONNECTED = 0; // among the confirmed subscriptions, which count from 1
constexpr int KEEP_ALIVE_SECONDS = 60;

Client *self(void *client) {
    return static_cast<Client *>(client);
}

std::string binary_property(const mosquitto_property *properties, int identifier) {
    void *bytes = nullptr;
    uint16_t length = 0;
    mosquitto_property_read_binary(properties, identifier, &bytes, &length, false);
    std::string result(static_cast<const char *>(bytes), length);
    free(bytes);
    return result;
}

} // namespace

Client::Client(const std::string &socket)
    : reply_topic_("reply/" + std::to_string(getpid()) + "-" +
                   std::to_string(reinterpret_cast<uintptr_t>(this))) {
    mosquitto_lib_init();
    handle_ = mosquitto_new(nullptr, true, this);
    mosquitto_int_option(handle_, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
    mosquitto_connect_callback_set(handle_,
                                   [](mosquitto *, void *client, int) { self(client)->confirm(CONNECTED); });
    mosquitto_subscribe_callback_set(
        handle_, [](mosquitto *, void *client, int id, int, const int *) { self(client)->confirm(id); });
    mosquitto_message_v5_callback_set(handle_, on_message);
    mosquitto_connect(handle_, socket.c_str(), 0, KEEP_ALIVE_SECONDS);
    mosquitto_loop_start(handle_);
    wait_until([this] { return confirmed_.contains(CONNECTED); });
    subscribe(reply_topic_);
}

Client::~Client() {
    mosquitto_disconnect(handle_);
    mosquitto_loop_stop(handle_, false);
    mosquitto_destroy(handle_);
}

void Client::on_message(mosquitto *, void *client, const mosquitto_message *message,
                        const mosquitto_property *properties) {
    char *name = nullptr, *code = nullptr; // an answer has one such property
    mosquitto_property_read_string_pair(properties, MQTT_PROP_USER_PROPERTY, &name, &code, false);
    Message received = {
        .topic = message->topic,
        .payload = {static_cast<const char *>(message->payload), static_cast<size_t>(message->payloadlen)},
        .correlation = binary_property(properties, MQTT_PROP_CORRELATION_DATA),
        .code = code ? code : "",
    };
    free(name);
    free(code);
    std::lock_guard lock(self(client)->mutex_);
    self(client)->received_.push_back(std::move(received));
    self(client)->changed_.notify_all();
}

void Client::confirm(int id) {
    std::lock_guard lock(mutex_);
    confirmed_.insert(id);
    changed_.notify_all();
}

bool Client::wait_until(const std::function<bool()> &reached) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, LIMIT, reached);
}

bool Client::subscribe(const std::string &filter) {
    int id = 0;
    if (mosquitto_subscribe(handle_, &id, filter.c_str(), QOS) != MOSQ_ERR_SUCCESS) return false;
    return wait_until([&] { return confirmed_.contains(id); });
}

bool Client::publish(const Message &message) {
    mosquitto_property *properties = nullptr;
    if (!message.response_topic.empty())
        mosquitto_property_add_string(&properties, MQTT_PROP_RESPONSE_TOPIC, message.response_topic.c_str());
    if (!message.correlation.empty())
        mosquitto_property_add_binary(&properties, MQTT_PROP_CORRELATION_DATA, message.correlation.data(),
                                      static_cast<uint16_t>(message.correlation.size()));
    int result = mosquitto_publish_v5(handle_, nullptr, message.topic.c_str(),
                                      static_cast<int>(message.payload.size()), message.payload.data(), QOS,
                                      message.retain, properties);
    mosquitto_property_free_all(&properties);
    return result == MOSQ_ERR_SUCCESS;
}

std::optional<Message> Client::wait(const Match &match) {
    std::optional<Message> found;
    wait_until([&] {
        auto message = std::find_if(received_.begin(), received_.end(), match);
        if (message == received_.end()) return false;
        found = *message;
        received_.erase(message);
        return true;
    });
    return found;
}

std::optional<Message> Client::wait(const std::string &topic, const std::string &payload) {
    return wait([&](const Message &message) {
        return message.topic == topic && (payload.empty() || message.payload == payload);
    });
}

std::string Client::send_request(const std::string &topic, const std::string &payload) {
    std::string correlation = "request " + std::to_string(++requests_);
    publish({.topic = topic, .payload = payload, .response_topic = reply_topic_, .correlation = correlation});
    return correlation;
}

std::optional<Message> Client::wait_answer(const std::string &correlation) {
    return wait([&](const Message &message) {
        return message.topic == reply_topic_ && message.correlation == correlation;
    });
}

std::optional<Message> Client::request(const std::string &topic, const std::string &payload) {
    return wait_answer(send_request(topic, payload));
}

} // namespace test_mqtt
