// SPDX-License-Identifier: Apache-2.0
// An MQTT 5 client that plays the cloud. It receives on a thread of its own; the functions may be called from
// any.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>

struct mosquitto;
struct mosquitto_message;
struct mqtt5__property;

namespace test_mqtt {

struct Message {
    std::string topic;
    std::string payload;
    std::string response_topic = {}; // of what is sent; empty: none
    std::string correlation = {};
    std::string code = {}; // the user property "code" of an answer
    bool retain = false;   // of what is sent
};

class Client {
  public:
    using Match = std::function<bool(const Message &)>;
    static constexpr std::chrono::milliseconds LIMIT = std::chrono::seconds(20);

    // Connects to the broker's Unix socket.
    explicit Client(const std::string &socket);
    ~Client();
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    // True when the broker has confirmed it; what it keeps for the topic arrives like any message.
    bool subscribe(const std::string &filter);
    bool publish(const Message &message);

    // The first message received that matches, which is then forgotten; nothing when none has come within the
    // limit.
    std::optional<Message> wait(const Match &match);
    // By topic, and by payload where one is given.
    std::optional<Message> wait(const std::string &topic, const std::string &payload = "");
    // Sends a request and waits for its answer, by correlation data.
    std::optional<Message> request(const std::string &topic, const std::string &payload);
    // The two halves of it: what send_request returns finds the answer.
    std::string send_request(const std::string &topic, const std::string &payload);
    std::optional<Message> wait_answer(const std::string &correlation);

  private:
    void confirm(int id);
    static void on_message(mosquitto *, void *client, const mosquitto_message *message,
                           const mqtt5__property *properties);
    bool wait_until(const std::function<bool()> &reached);

    mosquitto *handle_;
    const std::string reply_topic_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Message> received_;
    std::set<int> confirmed_;
    std::atomic<unsigned> requests_ = 0;
};

} // namespace test_mqtt
