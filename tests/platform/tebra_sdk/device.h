// SPDX-License-Identifier: Apache-2.0
// A device whose slots write down what is called, and the fixture that puts it on a broker.
#pragma once

#include "support/mqtt/broker.h"
#include "support/mqtt/client.h"
#include "tebra_sdk.h"

#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

inline const std::string PREFIX = "tebra/product1/serial1/";

// A call that "later" has got.
struct OpenCall {
    uint32_t handle;
    uint32_t request;
    std::string parameters;
};

// The slots' diary, in the order of the calls; slots run on several threads.
class Diary {
  public:
    int write(const std::string &line); // 0, like the slots
    std::vector<std::string> lines();
    size_t count(const std::string &line);
    // Whether the line stands there `times` times before the limit.
    bool wait(const std::string &line, size_t times = 1);

  private:
    std::mutex mutex_;
    std::vector<std::string> lines_;
};
// Never destroyed, like all that the SDK's threads use: they run until the process ends.
extern Diary &diary;
extern std::vector<OpenCall> &open_calls; // complete once the diary has as many lines "later"
extern std::latch &gate;                  // holds the slots "slow" and the upgrade callback back

// Looks again and again until it is so; false when it is not within the limit.
bool eventually(const std::function<bool()> &so);

// Fills a text field of the record.
template <size_t N>
void put(char (&field)[N], const std::string &text) {
    snprintf(field, N, "%s", text.c_str());
}

class SdkTest : public testing::Test {
  protected:
    SdkTest();

    // Starts the SDK on the broker's socket and waits for the link.
    void start();
    // Starts another device in a process of its own. To be called before this one has threads.
    pid_t fork_device() const;
    // "CODE BODY" of the answer.
    std::string answer(const std::string &topic, const std::string &payload = "");

    // product1, serial1, MAC, versions, cache file /tmp/sdk.cache, log /tmp/sdk.log
    global_config config;
    test_mqtt::Broker broker;
    std::optional<test_mqtt::Client> client;
};
