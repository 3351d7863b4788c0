// SPDX-License-Identifier: Apache-2.0
#include "support/recording_sdk.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>

namespace recording_sdk {

namespace {

std::mutex mutex;
std::condition_variable called;
std::vector<Call> made;
std::function<void()> post_hook;
std::atomic<int> connect_state{1};
std::atomic<struct global_config *> started{nullptr};

std::string argument(const char *text) {
    return text == nullptr ? "(null)" : text;
}

std::string argument(long number) {
    return std::to_string(number);
}

template <class... Arguments>
int record(const char *function, int result, Arguments... arguments) {
    {
        std::lock_guard lock(mutex);
        made.push_back({function, {argument(arguments)...}});
        called.notify_all(); // under the lock: whoever waits may end the program, and this object, next
    }
    return result;
}

std::vector<Call> of(const std::string &function) {
    std::vector<Call> found;
    std::copy_if(made.begin(), made.end(), std::back_inserter(found),
                 [&](const Call &call) { return call.function == function; });
    return found;
}

} // namespace

std::string Call::line() const {
    std::string text = function + "(";
    for (const std::string &argument : arguments)
        text += (&argument == &arguments.front() ? "" : ", ") + argument;
    return text + ")";
}

std::vector<Call> calls() {
    std::lock_guard lock(mutex);
    return made;
}

std::vector<Call> calls_of(const std::string &function) {
    std::lock_guard lock(mutex);
    return of(function);
}

std::vector<std::string> lines() {
    std::vector<std::string> result;
    for (const Call &call : calls())
        result.push_back(call.line());
    return result;
}

void clear_calls() {
    std::lock_guard lock(mutex);
    made.clear();
}

bool wait_for(const std::string &function, size_t count, std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex);
    return called.wait_for(lock, limit, [&] { return of(function).size() >= count; });
}

void on_post(std::function<void()> hook) {
    std::lock_guard lock(mutex);
    post_hook = std::move(hook);
}

void set_connect_state(int state) {
    connect_state = state;
}

struct global_config *started_with() {
    return started;
}

} // namespace recording_sdk

using recording_sdk::record;

int set_device_secret(const char *secret) {
    return record("set_device_secret", 0, secret);
}

int start_sdk(struct global_config *config) {
    recording_sdk::started = config;
    return record("start_sdk", 0);
}

int get_connect_state(void) {
    return recording_sdk::connect_state;
}

int update_checkTime(int ota_check_interval, int min_interval, int max_interval) {
    return record("update_checkTime", 0, ota_check_interval, min_interval, max_interval);
}

int TEBRA_SDK_PostProperty(const char *json) {
    std::function<void()> hook;
    {
        std::lock_guard lock(recording_sdk::mutex);
        hook = recording_sdk::post_hook;
    }
    if (hook) hook();
    return record("TEBRA_SDK_PostProperty", 0, json);
}

int TEBRA_SDK_PostEvent(const char *name, const char *json) {
    return record("TEBRA_SDK_PostEvent", 0, name, json);
}

int TEBRA_SDK_PostUpgress(int percent) {
    return record("TEBRA_SDK_PostUpgress", 0, percent);
}

int TEBRA_SDK_Handle_Response(uint32_t call_handle, uint32_t request_id, int code, const char *json,
                              const char *service) {
    return record("TEBRA_SDK_Handle_Response", 0, call_handle, request_id, code, json, service);
}
