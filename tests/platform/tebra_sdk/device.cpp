// SPDX-License-Identifier: Apache-2.0
#include "device.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>

Diary &diary = *new Diary;
std::vector<OpenCall> &open_calls = *new std::vector<OpenCall>;
std::latch &gate = *new std::latch(1);

namespace {

std::mutex state_mutex;
std::string &echo_value = *new std::string("{}");

int echo_set(const char *, const char *value, char *, int) {
    std::lock_guard lock(state_mutex);
    echo_value = value;
    return 0;
}

int echo_get(const char *, char *output, int length) {
    std::lock_guard lock(state_mutex);
    snprintf(output, static_cast<size_t>(length), "%s", echo_value.c_str());
    return 0;
}

int locked_set(const char *context, const char *, char *reply, int length) {
    snprintf(reply, static_cast<size_t>(length), "%s is locked", context);
    return 7;
}

// Fills the whole buffer and does not terminate it.
int full_get(const char *, char *output, int length) {
    memset(output, 'x', static_cast<size_t>(length));
    return 0;
}

int slow_get(const char *, char *output, int length) {
    gate.wait();
    snprintf(output, static_cast<size_t>(length), "{\"slow\":1}");
    return 0;
}

int echo_call(uint32_t handle, uint32_t request, void *, void *, const char *parameters) {
    const char *text = parameters ? parameters : "{\"parameters\":null}";
    diary.write("echo " + std::to_string(TEBRA_SDK_Handle_Response(handle, request, 200, text, "echo")));
    diary.write("again " + std::to_string(TEBRA_SDK_Handle_Response(handle, request, 200, "{}", "echo")));
    return 0;
}

int later_call(uint32_t handle, uint32_t request, void *, void *, const char *parameters) {
    std::lock_guard lock(state_mutex);
    open_calls.push_back({handle, request, parameters ? parameters : ""});
    return diary.write("later");
}

template <int Code>
int fixed_call(uint32_t handle, uint32_t request, void *, void *, const char *) {
    return TEBRA_SDK_Handle_Response(handle, request, Code, Code == 200 ? "no \"JSON\"" : nullptr, nullptr);
}

int upgrade(void *, void *, void *, const char *url, const char *md5, const char *version,
            const char *strategy) {
    diary.write(std::string("upgrade ") + url + "|" + md5 + "|" + version + "|" + strategy);
    gate.wait();
    return atoi(version);
}

template <char Letter>
int write_init() {
    diary.write(std::string("init ") + Letter + (get_connect_state() ? " connected" : ""));
    return Letter == 'c' ? -1 : 0; // a slot that fails does not keep the others from running
}
template <char Letter>
int write_hook() {
    return diary.write(std::string("hook ") + Letter + (get_connect_state() ? "" : " not connected"));
}

const property_row PROPERTIES[] = {
    {"echo", write_init<'a'>, echo_set, echo_get, write_hook<'a'>, nullptr,
     [] { return diary.write("report"); }},
    {"locked", nullptr, locked_set, [](const char *, char *, int) { return -1; }, nullptr, nullptr, nullptr},
    {"full", write_init<'c'>, nullptr, full_get, nullptr, nullptr, nullptr},
    {"slow", write_init<'d'>, nullptr, slow_get, write_hook<'d'>, nullptr, nullptr},
    {},
};
const service_row SERVICES[] = {
    {"echo", nullptr, echo_call},
    {"refuse", nullptr, fixed_call<402>},
    {"text", nullptr, fixed_call<200>},
    {"later", nullptr, later_call},
    {},
};
const other_handle_table OTHER = {[] { return diary.write("online"); }, {}};

} // namespace

int Diary::write(const std::string &line) {
    std::lock_guard lock(mutex_);
    lines_.push_back(line);
    return 0;
}

std::vector<std::string> Diary::lines() {
    std::lock_guard lock(mutex_);
    return lines_;
}

size_t Diary::count(const std::string &line) {
    const std::vector<std::string> all = lines();
    return static_cast<size_t>(std::count(all.begin(), all.end(), line));
}

bool Diary::wait(const std::string &line, size_t times) {
    return eventually([&] { return count(line) >= times; });
}

bool eventually(const std::function<bool()> &so) {
    auto deadline = std::chrono::steady_clock::now() + test_mqtt::Client::LIMIT;
    while (!so()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

SdkTest::SdkTest()
    : config{.product_key = "product1",
             .serial_number = "serial1",
             .mac = "A1:B2:C3:D4:E5:F6",
             .software_version = "1.2.3",
             .cache_file_path = "/tmp/sdk.cache",
             .log_file_path = "/tmp/sdk.log",
             .property_map = PROPERTIES,
             .service_map = SERVICES,
             .other_handle = &OTHER,
             .upgrade = upgrade,
             .interval = 300} {
    setenv("TEBRA_SDK_BROKER", broker.socket().c_str(), 1);
}

void SdkTest::start() {
    ASSERT_TRUE(broker.running());
    client.emplace(broker.socket());
    ASSERT_TRUE(client->subscribe("tebra/#"));
    ASSERT_EQ(start_sdk(&config), 0);
    ASSERT_TRUE(diary.wait("online"));
}

pid_t SdkTest::fork_device() const {
    pid_t device = fork();
    if (device != 0) return device;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    global_config other = config;
    put(other.serial_number, "serial2");
    put(other.log_file_path, "/tmp/sdk2.log");
    start_sdk(&other);
    for (;;)
        pause();
}

std::string SdkTest::answer(const std::string &topic, const std::string &payload) {
    std::optional<test_mqtt::Message> message = client->request(PREFIX + topic, payload);
    return message ? message->code + " " + message->payload : "no answer";
}
