// SPDX-License-Identifier: Apache-2.0
// A device over the SDK. Its slots print what is called, a line each. A line of words, with tabs between
// them, on standard input is a call, whose result is printed as "= RESULT".
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <latch>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tebra_sdk.h"

namespace {

struct OpenCall {
    uint32_t handle, request;
    std::string parameters;
};

// Never destroyed: the SDK's threads run until the process ends.
std::mutex mutex;
std::string &echo_value = *new std::string("{}");
std::vector<OpenCall> &open_calls = *new std::vector<OpenCall>;
std::latch &gate = *new std::latch(1); // holds the slots "slow" and the upgrade callback back

int say(const std::string &line) {
    std::lock_guard lock(mutex);
    puts(line.c_str());
    return fflush(stdout);
}

int echo_set(const char *, const char *value, char *, int) {
    std::lock_guard lock(mutex);
    echo_value = value;
    return 0;
}

int echo_get(const char *, char *output, int length) {
    std::lock_guard lock(mutex);
    snprintf(output, static_cast<size_t>(length), "%s", echo_value.c_str());
    return 0;
}

int locked_set(const char *context, const char *, char *reply, int length) {
    snprintf(reply, static_cast<size_t>(length), "%s is locked", context);
    return 7;
}

// "full" fills the whole buffer and does not terminate it, "long" just fits.
int full_get(const char *context, char *output, int length) {
    memset(output, 'x', static_cast<size_t>(length));
    if (context == std::string("long")) output[length - 2] = '\0';
    return 0;
}

int slow_get(const char *, char *output, int length) {
    gate.wait();
    snprintf(output, static_cast<size_t>(length), "{\"slow\":1}");
    return 0;
}

int echo_call(uint32_t handle, uint32_t request, void *, void *, const char *parameters) {
    const char *text = parameters ? parameters : "{\"parameters\":null}";
    say("echo " + std::to_string(TEBRA_SDK_Handle_Response(handle, request, 200, text, "echo")));
    return say("again " + std::to_string(TEBRA_SDK_Handle_Response(handle, request, 200, "{}", "echo")));
}

int later_call(uint32_t handle, uint32_t request, void *, void *, const char *parameters) {
    {
        std::lock_guard lock(mutex);
        open_calls.push_back({handle, request, parameters ? parameters : ""});
    }
    return say("later");
}

template <int Code>
int fixed_call(uint32_t handle, uint32_t request, void *, void *, const char *) {
    return TEBRA_SDK_Handle_Response(handle, request, Code, Code == 200 ? "no \"JSON\"" : nullptr, nullptr);
}

int upgrade(void *, void *, void *, const char *url, const char *md5, const char *version,
            const char *strategy) {
    say(std::string("upgrade ") + url + "|" + md5 + "|" + version + "|" + strategy);
    gate.wait();
    return atoi(version);
}

template <char Letter>
int init() {
    say(std::string("init ") + Letter + (get_connect_state() ? " connected" : ""));
    return Letter == 'c' ? -1 : 0; // a slot that fails does not keep the others from running
}
template <char Letter>
int hook() {
    return say(std::string("hook ") + Letter + (get_connect_state() ? "" : " not connected"));
}

const property_row PROPERTIES[] = {
    {"echo", init<'a'>, echo_set, echo_get, hook<'a'>, nullptr, [] { return say("report"); }},
    {"locked", nullptr, locked_set, [](const char *, char *, int) { return -1; }, nullptr, nullptr, nullptr},
    {"full", init<'c'>, nullptr, full_get, nullptr, nullptr, nullptr},
    {"long", nullptr, nullptr, full_get, nullptr, nullptr, nullptr},
    {"slow", init<'d'>, nullptr, slow_get, hook<'d'>, nullptr, nullptr},
    {},
};
const service_row SERVICES[] = {
    {"echo", nullptr, echo_call},
    {"refuse", nullptr, fixed_call<402>},
    {"text", nullptr, fixed_call<200>},
    {"later", nullptr, later_call},
    {},
};
const other_handle_table OTHER = {[] { return say("online"); }, {}};
global_config config{.product_key = "product1",
                     .serial_number = "serial1",
                     .mac = "A1:B2:C3:D4:E5:F6",
                     .software_version = "1.2.3",
                     .cache_file_path = "/tmp/sdk.cache",
                     .log_file_path = "/tmp/sdk.log",
                     .property_map = PROPERTIES,
                     .service_map = SERVICES,
                     .other_handle = &OTHER,
                     .upgrade = upgrade,
                     .interval = 300};

// Fills a text field of the record, without a terminator where the text is too long for one.
template <size_t N>
int put(char (&field)[N], const std::string &text) {
    memset(field, 0, N);
    return static_cast<int>(text.copy(field, N));
}

// Each thread answers every open call: all but one of them come too late. Gives how many were accepted.
int answer_open_calls(size_t threads) {
    std::unique_lock lock(mutex);
    const std::vector<OpenCall> calls = open_calls;
    lock.unlock();
    std::atomic<int> accepted = 0;
    std::vector<std::jthread> running;
    for (size_t t = 0; t < threads; t++)
        running.emplace_back([&, t] {
            for (size_t i = calls.size(); i > 0; i--) {
                const OpenCall &call = calls[(i + t * calls.size() / threads) % calls.size()];
                const char *text = call.parameters.c_str();
                accepted += TEBRA_SDK_Handle_Response(call.handle, call.request, 200, text, "") == 0;
            }
        });
    running.clear();
    return accepted;
}

int run(const std::vector<std::string> &words) {
    const auto text = [&](size_t at) { return words.at(at) == "null" ? nullptr : words[at].c_str(); };
    const auto number = [&](size_t at) { return atoi(words.at(at).c_str()); };
    const std::string &what = words.at(0);
    if (what == "product") return put(config.product_key, words.at(1));
    if (what == "serial") return put(config.serial_number, words.at(1));
    if (what == "cache") return put(config.cache_file_path, words.at(1));
    if (what == "log") return put(config.log_file_path, words.at(1));
    if (what == "secret") return set_device_secret(text(1));
    if (what == "start") return start_sdk(&config);
    if (what == "start nothing") return start_sdk(nullptr);
    if (what == "state") return get_connect_state();
    if (what == "property") return TEBRA_SDK_PostProperty(text(1));
    if (what == "event") return TEBRA_SDK_PostEvent(text(1), text(2));
    if (what == "progress") return TEBRA_SDK_PostUpgress(number(1));
    if (what == "intervals") return update_checkTime(number(1), number(2), number(3));
    if (what == "respond") return TEBRA_SDK_Handle_Response(number(1), number(2), 200, "{}", "echo");
    if (what == "answer") return answer_open_calls(number(1));
    if (what == "open gate") gate.count_down();
    return 0;
}

} // namespace

int main() {
    for (std::string line; std::getline(std::cin, line);) {
        std::vector<std::string> words;
        std::istringstream rest(line + "\t");
        for (std::string word; std::getline(rest, word, '\t');)
            words.push_back(word);
        say("= " + std::to_string(run(words)));
    }
}
