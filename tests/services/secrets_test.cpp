// SPDX-License-Identifier: Apache-2.0
// What a log may not tell, in each form in which the agent writes it.
#include "services/secrets.h"

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

#include "core/registration.h"
#include "services/service_rig.h"
#include "support/text_file.h"

namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Secrets, AreMaskedByTheirNames) {
    const struct {
        const char *line, *masked;
    } cases[] = {
        {R"({"wifi2gPwd":"geheim","a":1})", R"({"wifi2gPwd":"****","a":1})"},
        {R"({ "key" : "a b,}" , "ssid" : "x" })", R"({ "key" : "****" , "ssid" : "x" })"},
        {R"({"pwd":"a\"b\\","ssid":"x"})", R"({"pwd":"****","ssid":"x"})"},
        {R"(buf:"{\"pwd\":\"a\\\"b\\\\\",\"ssid\":\"x\"}")", R"(buf:"{\"pwd\":\"****\",\"ssid\":\"x\"}")"},
        {R"({\\\"pwd\\\":\\\"a\\\\\\\"b\\\",\\\"c\\\":1})", R"({\\\"pwd\\\":\\\"****\\\",\\\"c\\\":1})"},
        {R"({"oldPwd":"cut off \)", R"({"oldPwd":"****)"},
        {R"({"pwd":12345678,"use2gPwd":true,"x":1})", R"({"pwd":****,"use2gPwd":****,"x":1})"},
        {R"({"keys":["a","b"],"x":1})", R"({"keys":****)"},
        {"passwd:a b, c;d\n", "passwd:****\n"},
        {"WIFI_PSK = a\"b\n", "WIFI_PSK = ****\n"},
        {R"({"productKey":"Tq83mZc1wk","authmode":"WPA2-PSK","key":""})", nullptr},
        {"key:", nullptr},
        {"", nullptr},
    };
    for (const auto &c : cases)
        EXPECT_EQ(masked(c.line, {}), c.masked ? c.masked : c.line);
}

TEST(Secrets, AreMaskedByTheirValues) {
    const std::vector<std::string> values = {"home", "homesweet", "password"};
    const struct {
        const char *line, *masked;
    } cases[] = {
        {"x homesweet y", "x **** y"},
        {"homehomesweet", "****"},
        {R"({"password":"old one"})", R"({"****":"****"})"}, // a password may be any word
        {"cut at homesw\n", "cut at ****\n"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(masked(c.line, values), c.masked);
}

// What the router holds, as it is, in JSON, and in JSON within JSON.
TEST(Secrets, OfTheRouterAreKnownInEveryForm) {
    const std::string odd = R"(q"u\o/te)";
    ServiceRig rig(
        R"({"vrop.wifi.1.ap":[{"index":0,"key":"q\"u\\o/te"}],"account":{"user":"admin","passwd":"YWRtaW4xMjM="}})");
    std::ofstream("/tmp/qvtk.cache") << R"({"secret":"enrolled-secret"})";
    const auto values = present_secrets();
    for (const char *form : {R"(q"u\o/te)", R"(q\"u\\o\/te)", R"(q\"u\\o/te)", R"(q\\\"u\\\\o\\\/te)",
                             R"(q\\\"u\\\\o/te)", "admin123", "YWRtaW4xMjM=", "isp-password",
                             "simulated-device-secret", "8vbq4ne1xrtpds62", "enrolled-secret"})
        EXPECT_EQ(masked(std::string("> ") + form + " <", values), "> **** <");
    EXPECT_EQ(masked("Home Tq83mZc1wk SIM2408000017", values), "Home Tq83mZc1wk SIM2408000017");
}

TEST(LogUpload, SendsTheLogsWithoutSecretsAndLeavesNothing) {
    ServiceRig rig;
    get_qvtkRegister_info(&register_config);
    const char request[] = R"({"uploadUrl":"https://host/put","url":"https://host/get"})";
    for (const int status : {0, 1}) {
        script("common_put_file", "stat -c %a \"$1\" >/tmp/mode\nrm -rf /tmp/sent; mkdir /tmp/sent\n"
                                  "tar -xzf \"$1\" -C /tmp/sent\nexit " +
                                      std::to_string(status));
        std::ofstream("/apetc/rvxa/qvtk_upgrade.log") << "key is homesweethome\n\nlast";
        std::ofstream("/apvar/log/qvtk_tebra.log")
            << "first\n"
            << std::string(5 << 20, 'x') << "\n{\"devSecret\":\"y\"}\npwd:" << std::string(70000, 'z');
        EXPECT_EQ(rig.call("uploadLog", request), status == 0
                                                      ? R"(0: 200 uploadLog {"url": "https://host/get"})"
                                                      : R"(-1: 400 uploadLog {"upload":"failed"})");
        EXPECT_EQ(text_of("/tmp/mode"), "600\n");
        EXPECT_EQ(text_of("/tmp/url.txt"), "https://host/put");
        EXPECT_THAT(text_of("/tmp/sent/qvtk.log"), HasSubstr("uploadlog_call ..."));
        EXPECT_EQ(text_of("/tmp/sent/qvtk_upgrade.log"), "key is ****\n\nlast");
        EXPECT_EQ(text_of("/tmp/sent/qvtk_tebra.log"), "{\"devSecret\":\"****\"}\npwd:****");
        for (const auto &left : std::filesystem::directory_iterator("/aptmp"))
            EXPECT_THAT(left.path().string(), Not(HasSubstr("qvtk_logs")));
    }
    std::filesystem::remove("/apvar/log/qvtk_tebra.log");
    ASSERT_EQ(mkfifo("/apvar/log/qvtk_tebra.log", 0600), 0); // nobody waits for its other end
    EXPECT_EQ(rig.call("uploadLog", R"({"uploadUrl":""})"), R"(-1: 400 uploadLog {"url":"failed"})");
    rig.call("uploadLog", request);
    EXPECT_FALSE(std::filesystem::exists("/tmp/sent/qvtk_tebra.log"));
    script("tar", "exit 1");
    EXPECT_EQ(rig.call("uploadLog", request), "-1: 400 uploadLog {}");
    EXPECT_TRUE(has_logged("pack logs fail"));
}

} // namespace
