// SPDX-License-Identifier: Apache-2.0
// A device whose slots write down what is called, and the fixture that puts it on a broker.
#pragma once

#include "support/mqtt/broker.h"
#include "support/mqtt/client.h"
#include "tebra_sdk.h"

#include <condition_variable>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

inline const std::string PREFIX = "tebra/product1/serial1/";

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
    std::condition_variable changed_;
    std::vector<std::string> lines_;
};
extern Diary &diary; // never destroyed, like all that the SDK's threads use: they run until the process ends

// Holds the slots "slow" and the upgrade callback back until it is opened.
class Gate {
  public:
    void open();
    void pass();

  private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};
extern Gate &gate;

// Looks again and again until it is so; false when it is not within the limit.
bool eventually(const std::function<bool()> &so);

// The calls that "later" has got.
struct OpenCall {
    uint32_t handle;
    uint32_t request;
    std::string parameters;
};
std::vector<OpenCall> open_calls();

// Fills a text field of the record.
template <size_t N>
void put(char (&field)[N], const std::string &text) {
    snprintf(field, N, "%s", text.c_str());
}

// The record of the device: product1, serial1, MAC, versions, cache file /tmp/sdk.cache, log /tmp/sdk.log.
global_config device_record();

class SdkTest : public testing::Test {
  protected:
    SdkTest();

    // Starts the SDK on the broker's socket and waits for the link.
    void start();
    // "CODE BODY" of the answer.
    std::string answer(const std::string &topic, const std::string &payload = "");

    global_config config = device_record();
    test_mqtt::Broker broker;
    std::optional<test_mqtt::Client> client;
};
