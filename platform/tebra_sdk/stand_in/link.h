// SPDX-License-Identifier: Apache-2.0
// The connection to the broker (MQTT 5): one thread that connects, serves the connection and, when it is
// lost, connects again with growing, scattered pauses. Everything of the device lies below one topic prefix:
//
//   status       retained: {"online":true, identity...}, or {"online":false}, which is also the last will
//   property/NAME/get, property/NAME/set, service/NAME, upgrade      requests, to which the link subscribes
//
// An answer goes to the request's response topic with its correlation data. Messages are sent with QoS 1 and
// dropped when the link is down or when too many wait for the broker.
#pragma once

#include "answers.h"
#include "calls.h"
#include "record.h"
#include "settings.h"

#include <atomic>
#include <mosquitto.h>
#include <string>

// Called on the link's thread, which must not be held up.
class LinkEvents {
  public:
    // The broker has confirmed the subscriptions and "status" says online.
    virtual void link_up() = 0;
    // `topic` is what follows the prefix.
    virtual void request(const std::string &topic, std::string payload, ReplyTo reply) = 0;

  protected:
    ~LinkEvents() = default;
};

// Lives as long as the process once it has been started.
class Link {
  public:
    Link(const Record &record, const LinkSettings &settings, LinkEvents *events);
    ~Link();
    Link(const Link &) = delete;
    Link &operator=(const Link &) = delete;

    // False, with a line in the log, when the settings cannot be used or there is no thread.
    bool start();

    // The rest: any thread.
    bool up() const { return up_; }
    // `topic` goes behind the prefix. False when the message was not taken.
    bool post(const std::string &topic, const std::string &payload, bool retain = false);
    // Nothing happens for a reply without a topic.
    void answer(const ReplyTo &reply, const Answer &answer);

  private:
    static void *body(void *link);
    static void on_connect(mosquitto *, void *link, int reason, int flags, const mosquitto_property *);
    static void on_disconnect(mosquitto *, void *link, int reason, const mosquitto_property *);
    static void on_subscribe(mosquitto *, void *link, int id, int count, const int *granted,
                             const mosquitto_property *);
    static void on_publish(mosquitto *, void *link, int id, int reason, const mosquitto_property *);
    static void on_message(mosquitto *, void *link, const mosquitto_message *message,
                           const mosquitto_property *properties);

    bool configure();
    void set_callbacks();
    void run();
    void serve();
    void subscribe();
    void subscribed(int count, const int *granted);
    void received(const mosquitto_message &message, const mosquitto_property *properties);
    int publish(const std::string &topic, const std::string &payload, bool retain,
                const mosquitto_property *properties);

    const LinkSettings settings_;
    const std::string prefix_; // ends with a slash
    const std::string client_id_;
    const std::string online_;
    LinkEvents *const events_;
    mosquitto *client_ = nullptr;
    std::atomic<bool> up_ = false;
    bool served_ = false; // this connection has been up; the link's thread alone
    std::atomic<int> unconfirmed_ = 0;
};
