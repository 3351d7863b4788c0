// SPDX-License-Identifier: Apache-2.0
// The functions of the contract. What start_sdk makes is never released: its threads run until the process
// ends.
#include "core/log.h"
#include "dispatcher.h"
#include "enrolment.h"
#include "housekeeper.h"
#include "json_text.h"

#include <array>
#include <atomic>
#include <mutex>

namespace {

class Sdk : private LinkEvents {
  public:
    Sdk(Record record, const LinkSettings &settings);

    bool start();
    Link &link() { return link_; }
    int respond(Calls::Id id, const Answer &answer);
    void post_check_time();

  private:
    void link_up() override;
    void request(const std::string &topic, std::string payload, ReplyTo reply) override;

    const Record record_;
    Link link_;
    Calls calls_;
    Housekeeper housekeeper_;
    Dispatcher dispatcher_;
};

// What the agent says before or beside start_sdk.
struct Spoken {
    std::mutex mutex;
    std::string secret;
    std::string check_time; // JSON; empty while nothing was said
};

Spoken &spoken() {
    static auto *words = new Spoken; // outlives the static destructors, which run beside the SDK's threads
    return *words;
}

std::mutex start_mutex;
std::atomic<Sdk *> running = nullptr;

Sdk::Sdk(Record record, const LinkSettings &settings)
    : record_(std::move(record)), link_(record_, settings, this),
      calls_(std::chrono::seconds(settings.call_seconds)), housekeeper_(record_, settings, link_, calls_),
      dispatcher_(record_, link_, calls_, housekeeper_) {}

bool Sdk::start() {
    {
        std::lock_guard lock(spoken().mutex);
        write_enrolment(record_.cache_file, spoken().secret);
    }
    return housekeeper_.start() && link_.start();
}

void Sdk::link_up() {
    post_check_time();
    housekeeper_.link_up();
}

void Sdk::request(const std::string &topic, std::string payload, ReplyTo reply) {
    dispatcher_.submit(topic, std::move(payload), std::move(reply));
}

int Sdk::respond(Calls::Id id, const Answer &answer) {
    std::optional<ReplyTo> reply = calls_.close(id);
    if (!reply) return -1;
    link_.answer(*reply, answer);
    return 0;
}

void Sdk::post_check_time() {
    std::lock_guard lock(spoken().mutex);
    if (!spoken().check_time.empty()) link_.post("checktime", spoken().check_time, true);
}

void run_init_slots(const property_row *row) {
    for (; row->name; row++)
        if (row->init && row->init() != 0) LOG("%s could not be prepared", row->name);
}

int post(const std::string &topic, const char *json) {
    Sdk *sdk = running;
    return sdk && json && sdk->link().post(topic, json) ? 0 : -1;
}

} // namespace

int set_device_secret(const char *secret) {
    std::lock_guard lock(spoken().mutex);
    spoken().secret = secret ? secret : "";
    return 0;
}

int start_sdk(global_config *config) {
    std::lock_guard lock(start_mutex);
    std::optional<Record> record = read_record(config);
    if (!record || running) return -1;
    set_log_filepath(record->log_file.c_str());
    std::optional<LinkSettings> settings = read_settings();
    if (!settings) return -1;
    run_init_slots(record->properties);
    auto *sdk = new Sdk(*record, *settings);
    running = sdk;
    return sdk->start() ? 0
                        : -1; // a start that failed half way is final: a thread may already use the object
}

int get_connect_state(void) {
    Sdk *sdk = running;
    return sdk && sdk->link().up();
}

int update_checkTime(int ota_check_interval, int min_interval, int max_interval) {
    JsonRoot root(json_object_new_object());
    json_object_object_add(root.get(), "otaCheckInterval", json_object_new_int(ota_check_interval));
    json_object_object_add(root.get(), "minInterval", json_object_new_int(min_interval));
    json_object_object_add(root.get(), "maxInterval", json_object_new_int(max_interval));
    {
        std::lock_guard lock(spoken().mutex);
        spoken().check_time = json_text(root);
    }
    Sdk *sdk = running;
    if (sdk && sdk->link().up()) sdk->post_check_time();
    return 0;
}

int TEBRA_SDK_PostProperty(const char *json) {
    return post("property/post", json);
}

int TEBRA_SDK_PostEvent(const char *name, const char *json) {
    return name && is_topic_level(name) ? post(std::string("event/") + name, json) : -1;
}

int TEBRA_SDK_PostUpgress(int percent) {
    JsonRoot root(json_object_new_object());
    json_object_object_add(root.get(), "progress", json_object_new_int(percent));
    return post("upgrade/progress", json_text(root).c_str());
}

// The table's row says which service it is; `service` is for SDKs that keep no open calls.
int TEBRA_SDK_Handle_Response(uint32_t call_handle, uint32_t request_id, int code, const char *json,
                              const char *service) {
    (void)service;
    Sdk *sdk = running;
    return sdk ? sdk->respond({call_handle, request_id}, service_answer(code, json)) : -1;
}
