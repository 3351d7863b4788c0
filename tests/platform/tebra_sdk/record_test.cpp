// SPDX-License-Identifier: Apache-2.0
// What start_sdk accepts: the record, the settings, the files that it writes.
#include "device.h"

#include "support/text_file.h"

#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

TEST_F(SdkTest, UnusableRecordsAreRefused) {
    EXPECT_EQ(start_sdk(nullptr), -1);
    for (const char *text : {"", "a/b", "a+", "#", "\xc3"})
        for (bool product : {false, true}) {
            global_config bad = config;
            product ? put(bad.product_key, text) : put(bad.serial_number, text);
            EXPECT_EQ(start_sdk(&bad), -1) << text;
        }
    EXPECT_TRUE(diary.lines().empty()); // no init slot has run
    EXPECT_EQ(TEBRA_SDK_PostProperty("{}"), -1);
    EXPECT_EQ(TEBRA_SDK_Handle_Response(1, 1, 200, "{}", "echo"), -1);
    EXPECT_EQ(get_connect_state(), 0);
}

TEST_F(SdkTest, FieldsWithoutTerminatorAndFilesThatCannotBeWrittenAreTaken) {
    memset(config.product_key, 'p', sizeof config.product_key);
    memset(config.serial_number, 's', sizeof config.serial_number);
    put(config.cache_file_path, "/absent/sdk.cache");
    put(config.log_file_path, "/absent/sdk.log");
    set_device_secret("secret");
    start();
    EXPECT_TRUE(client->wait("tebra/" + std::string(64, 'p') + "/" + std::string(128, 's') + "/status"));
}

TEST_F(SdkTest, SettingsThatMeanNothingAreRefused) {
    const std::pair<const char *, const char *> rows[] = {
        {"BROKER", "host:"},      {"BROKER", "host:0"},     {"BROKER", ":1883"},
        {"BROKER", "host:65536"}, {"BROKER", "[::1"},       {"BROKER", "host:18x"},
        {"REPORT_SECONDS", "0"},  {"CALL_SECONDS", "soon"}, {"CAFILE", "/tmp/absent.pem"}};
    for (auto [name, value] : rows) {
        const std::string variable = std::string("TEBRA_SDK_") + name;
        setenv(variable.c_str(), value, 1);
        EXPECT_EQ(start_sdk(&config), -1) << name << "=" << value;
        unsetenv(variable.c_str());
    }
}

class Address : public SdkTest, public testing::WithParamInterface<const char *> {};

TEST_P(Address, LeadsToTheBroker) {
    test_mqtt::Broker on_network("/tmp/network", 1883, "listener 1884 ::1\n");
    setenv("TEBRA_SDK_BROKER", GetParam(), 1);
    ASSERT_EQ(start_sdk(&config), 0);
    EXPECT_TRUE(diary.wait("online"));
}
INSTANTIATE_TEST_SUITE_P(, Address, testing::Values("", "127.0.0.1:1883", "[::1]:1884"));

TEST_F(SdkTest, TlsIsVerifiedAndCredentialsReachTheBroker) {
    const std::string make =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=localhost "
        "-addext subjectAltName=IP:127.0.0.1 2>/dev/null ";
    ASSERT_EQ(system((make + "-keyout /tmp/key.pem -out /tmp/cert.pem").c_str()), 0);
    ASSERT_EQ(system((make + "-keyout /tmp/key2.pem -out /tmp/other.pem").c_str()), 0);
    ASSERT_EQ(system("mosquitto_passwd -b -c /tmp/passwords device word"), 0);
    test_mqtt::Broker secured("/tmp/secured", 0,
                              "allow_anonymous false\npassword_file /tmp/passwords\nlistener 8883\n"
                              "certfile /tmp/cert.pem\nkeyfile /tmp/key.pem\n");
    ASSERT_TRUE(secured.running());
    setenv("TEBRA_SDK_BROKER", "127.0.0.1", 1);
    setenv("TEBRA_SDK_USERNAME", "device", 1);
    setenv("TEBRA_SDK_PASSWORD", "word", 1);
    setenv("TEBRA_SDK_CAFILE", "/tmp/other.pem", 1);
    fork_device(); // does not trust this broker
    setenv("TEBRA_SDK_CAFILE", "/tmp/cert.pem", 1);
    ASSERT_EQ(start_sdk(&config), 0);
    EXPECT_TRUE(diary.wait("online"));
    EXPECT_TRUE(eventually([] { return text_of("/tmp/sdk2.log").find("TLS error") != std::string::npos; }));
    EXPECT_EQ(text_of("/tmp/sdk2.log").find("is up"), std::string::npos);
}

TEST_F(SdkTest, TheEnrolmentIsKeptPrivately) {
    std::ofstream("/tmp/sdk.cache") << "an older and longer enrolment than the new one";
    std::string secret = "s\"ecret";
    set_device_secret(secret.c_str());
    secret = "overwritten"; // the SDK has a copy
    start();
    EXPECT_EQ(text_of("/tmp/sdk.cache"), R"({"secret":"s\"ecret"})");
    EXPECT_EQ(std::filesystem::status("/tmp/sdk.cache").permissions(), std::filesystem::perms{0600});
    EXPECT_NE(text_of("/tmp/sdk.log"), "");
    EXPECT_EQ(text_of("/tmp/sdk.log").find("ecret"), std::string::npos);
}

} // namespace
