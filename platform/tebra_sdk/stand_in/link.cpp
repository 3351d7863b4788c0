// SPDX-License-Identifier: Apache-2.0
#include "link.h"

#include "core/clock.h"
#include "core/log.h"
#include "core/thread.h"
#include "json_text.h"
#include "mqtt_properties.h"

#include <algorithm>
#include <iterator>
#include <mqtt_protocol.h>
#include <sys/random.h>

namespace {

constexpr int KEEP_ALIVE_SECONDS = 60;
constexpr int LOOP_MILLIS = 10000; // the keep-alive is looked after at least this often
constexpr unsigned FIRST_PAUSE_MILLIS = 200;
constexpr unsigned LONGEST_PAUSE_MILLIS = 30000;
constexpr uint32_t MAX_PACKET_BYTES = 1024 * 1024;
constexpr int MAX_UNCONFIRMED = 256;
constexpr int QOS = 1;
const char OFFLINE[] = "{\"online\":false}";
const char *const REQUESTS[] = {"property/+/get", "property/+/set", "service/+", "upgrade"};

std::string online_text(const Record &record) {
    JsonRoot root(json_object_new_object());
    auto add = [&root](const char *key, const std::string &text) {
        json_object_object_add(root.get(), key, json_object_new_string(text.c_str()));
    };
    json_object_object_add(root.get(), "online", json_object_new_boolean(1));
    add("mac", record.mac);
    add("softwareVersion", record.software_version);
    add("hardwareVersion", record.hardware_version);
    add("vendor", record.vendor);
    add("areaCode", record.area_code);
    return json_text(root);
}

// Somewhere between half of `millis` and all of it, so that devices that lost one broker do not return as
// one.
unsigned scattered(unsigned millis) {
    unsigned random = 0;
    if (getrandom(&random, sizeof random, GRND_NONBLOCK) < 0) random = 0;
    return millis / 2 + random % (millis / 2 + 1);
}

Link *self(void *link) {
    return static_cast<Link *>(link);
}

} // namespace

Link::Link(const Record &record, const LinkSettings &settings, LinkEvents *events)
    : settings_(settings), prefix_("tebra/" + record.product_key + "/" + record.serial_number + "/"),
      client_id_("tebra-" + record.product_key + "-" + record.serial_number), online_(online_text(record)),
      events_(events) {}

Link::~Link() {
    if (client_) mosquitto_destroy(client_);
}

bool Link::start() {
    mosquitto_lib_init();
    client_ = mosquitto_new(client_id_.c_str(), true, this);
    if (!client_ || !configure()) return false;
    set_callbacks();
    if (start_detached(body, this) == 0) return true;
    LOG("no thread for the link");
    return false;
}

bool Link::configure() {
    mosquitto_int_option(client_, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
    mosquitto_int_option(client_, MOSQ_OPT_TCP_NODELAY, 1); // answers are small, and somebody waits for each
    mosquitto_threaded_set(client_, true);
    std::string will_topic = prefix_ + "status";
    int result =
        mosquitto_will_set_v5(client_, will_topic.c_str(), sizeof OFFLINE - 1, OFFLINE, QOS, true, nullptr);
    if (result == MOSQ_ERR_SUCCESS && !settings_.username.empty())
        result = mosquitto_username_pw_set(client_, settings_.username.c_str(), settings_.password.c_str());
    if (result == MOSQ_ERR_SUCCESS && !settings_.ca_file.empty())
        result = mosquitto_tls_set(client_, settings_.ca_file.c_str(), nullptr, nullptr, nullptr, nullptr);
    else if (result == MOSQ_ERR_SUCCESS && settings_.tls)
        result = mosquitto_int_option(client_, MOSQ_OPT_TLS_USE_OS_CERTS, 1);
    if (result != MOSQ_ERR_SUCCESS)
        LOG("the settings of the link cannot be used: %s", mosquitto_strerror(result));
    return result == MOSQ_ERR_SUCCESS;
}

void Link::set_callbacks() {
    mosquitto_connect_v5_callback_set(client_, on_connect);
    mosquitto_disconnect_v5_callback_set(client_, on_disconnect);
    mosquitto_subscribe_v5_callback_set(client_, on_subscribe);
    mosquitto_publish_v5_callback_set(client_, on_publish);
    mosquitto_message_v5_callback_set(client_, on_message);
}

void *Link::body(void *link) {
    self(link)->run();
    return nullptr;
}

void Link::run() {
    unsigned pause = FIRST_PAUSE_MILLIS;
    for (;;) {
        served_ = false;
        serve();
        up_ = false;
        if (served_) pause = FIRST_PAUSE_MILLIS;
        pause_millis(scattered(pause));
        pause = std::min(2 * pause, LONGEST_PAUSE_MILLIS);
    }
}

// One connection from its beginning to its end.
void Link::serve() {
    MqttProperties properties;
    properties.integer(MQTT_PROP_MAXIMUM_PACKET_SIZE, MAX_PACKET_BYTES);
    int result = mosquitto_connect_bind_v5(client_, settings_.host.c_str(), settings_.port,
                                           KEEP_ALIVE_SECONDS, nullptr, properties.get());
    while (result == MOSQ_ERR_SUCCESS)
        result = mosquitto_loop(client_, LOOP_MILLIS, 1);
    if (!served_)
        LOG("%s:%d cannot be reached: %s", settings_.host.c_str(), settings_.port,
            mosquitto_strerror(result));
}

void Link::on_connect(mosquitto *, void *link, int reason, int, const mosquitto_property *) {
    if (reason == 0)
        self(link)->subscribe();
    else
        LOG("the broker refuses: %s", mosquitto_reason_string(reason));
}

void Link::on_disconnect(mosquitto *, void *link, int reason, const mosquitto_property *) {
    if (self(link)->up_.exchange(false)) LOG("the link is lost: %s", mosquitto_strerror(reason));
}

void Link::on_subscribe(mosquitto *, void *link, int, int count, const int *granted,
                        const mosquitto_property *) {
    self(link)->subscribed(count, granted);
}

void Link::on_publish(mosquitto *, void *link, int, int, const mosquitto_property *) {
    self(link)->unconfirmed_--;
}

void Link::on_message(mosquitto *, void *link, const mosquitto_message *message,
                      const mosquitto_property *properties) {
    self(link)->received(*message, properties);
}

// A request that is kept by the broker is an old one: it is never asked for, and never served.
void Link::subscribe() {
    std::string topics[std::size(REQUESTS)];
    char *pointers[std::size(REQUESTS)];
    for (size_t i = 0; i < std::size(REQUESTS); i++) {
        topics[i] = prefix_ + REQUESTS[i];
        pointers[i] = topics[i].data();
    }
    mosquitto_subscribe_multiple(client_, nullptr, std::size(REQUESTS), pointers, QOS,
                                 MQTT_SUB_OPT_SEND_RETAIN_NEVER, nullptr);
}

void Link::subscribed(int count, const int *granted) {
    if (std::any_of(granted, granted + count, [](int reason) { return reason > 2; }))
        LOG("the broker refuses the subscriptions, the cloud cannot send requests");
    served_ = up_ = true;
    // Said only now, so that whoever sees the device online can send it requests.
    post("status", online_, true);
    LOG("the link is up");
    events_->link_up();
}

void Link::received(const mosquitto_message &message, const mosquitto_property *properties) {
    std::string topic = message.topic ? message.topic : "";
    if (message.retain || !topic.starts_with(prefix_)) return;
    ReplyTo reply = read_reply_to(properties);
    if (reply.topic.starts_with(prefix_)) reply.topic.clear(); // an answer must not come back as a request
    std::string payload;
    if (message.payload && message.payloadlen > 0)
        payload.assign(static_cast<const char *>(message.payload), static_cast<size_t>(message.payloadlen));
    events_->request(topic.substr(prefix_.size()), std::move(payload), std::move(reply));
}

int Link::publish(const std::string &topic, const std::string &payload, bool retain,
                  const mosquitto_property *properties) {
    if (!up_) return MOSQ_ERR_NO_CONN;
    if (unconfirmed_++ >= MAX_UNCONFIRMED) {
        unconfirmed_--;
        return MOSQ_ERR_NOMEM;
    }
    int result = mosquitto_publish_v5(client_, nullptr, topic.c_str(), static_cast<int>(payload.size()),
                                      payload.data(), QOS, retain, properties);
    // Without a connection the message is kept all the same, and confirmed after the next one.
    bool kept = result == MOSQ_ERR_SUCCESS || result == MOSQ_ERR_NO_CONN;
    if (!kept) unconfirmed_--;
    return kept ? MOSQ_ERR_SUCCESS : result;
}

bool Link::post(const std::string &topic, const std::string &payload, bool retain) {
    int result = publish(prefix_ + topic, payload, retain, nullptr);
    if (result != MOSQ_ERR_SUCCESS) LOG("%s is not sent: %s", topic.c_str(), mosquitto_strerror(result));
    return result == MOSQ_ERR_SUCCESS;
}

void Link::answer(const ReplyTo &reply, const Answer &answer) {
    if (reply.topic.empty()) return;
    auto send = [&](const Answer &what) {
        MqttProperties properties;
        properties.user("code", std::to_string(what.code));
        if (!reply.correlation.empty()) properties.bytes(MQTT_PROP_CORRELATION_DATA, reply.correlation);
        return publish(reply.topic, what.body, false, properties.get());
    };
    int result = send(answer);
    if (result == MOSQ_ERR_OVERSIZE_PACKET)
        result = send(refusal(REFUSED, "the answer is too large for the broker"));
    if (result != MOSQ_ERR_SUCCESS) LOG("an answer is not sent: %s", mosquitto_strerror(result));
}
