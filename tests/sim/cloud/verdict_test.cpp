// SPDX-License-Identifier: Apache-2.0
// Which requests the simulated cloud takes, and what it says of those that it refuses.
#include "client.h"
#include <gmock/gmock.h>

namespace {

using cloudsim::Cloud;

const cloudsim::Options KNOWN_DEVICE = {.devices = {{SERIAL, PRODUCT, SECRET}}};

TEST(CloudVerdict, SignedJson) {
    Cloud cloud(KNOWN_DEVICE);
    cloud.start();
    // RFC 2202 has no text of our form; this digest was computed by Python's hmac module.
    const std::string sign = "dfa7b26b233677fe352c19402e07c8b686332c2c", json = "application/json";
    const std::string mine = R"({"sn":"SN0001","productKey":"PRODUCT1","timestamp":1700000000)";
    struct {
        const char *path;
        std::string type, body, sign, verdict;
    } const cases[] = {
        {"get-settings", json, mine + "}", sign, "ok"},
        {"get-settings", "text/plain", mine + "}", sign, "Content-Type is not application/json"},
        {"get-settings", json, mine + "}", "", "no sign header"},
        {"get-settings", json, mine + "}", "D" + sign.substr(1), "wrong signature"},
        {"get-settings", json, mine + "}", sign.substr(0, 39), "wrong signature"},
        {"get-settings", json, mine + "}", sign + "0", "wrong signature"},
        {"get-settings", json, mine + "}", signature(SERIAL, PRODUCT, "6"), "wrong signature"},
        {"get-settings", json, mine + "}", signature(SERIAL, PRODUCT, "1700000000", "other"),
         "wrong signature"},
        {"get-settings", json, mine + "} x", sign, "body is not a JSON object"},
        {"get-settings", json, "[]", sign, "body is not a JSON object"},
        {"get-settings", json, R"({"sn":1,"productKey":"PRODUCT1","timestamp":5})", sign, "sn missing"},
        {"get-settings", json, R"({"sn":"SN0001","productKey":"PRODUCT1","timestamp":"5"})", sign,
         "timestamp missing or not a number"},
        {"get-settings", json, R"({"sn":"SN2","productKey":"PRODUCT1","timestamp":5})", sign,
         "unknown device SN2"},
        {"report-runtime", json, mine + "}", sign, "runtimeList missing"},
        {"upgrade-progress", json, mine + R"(,"strategy":"1","progress":50,"oldVersion":"1"})", sign,
         "newVersion missing"},
        {"check-upgrade", json, mine + check_members("1") + "}", sign, "ok"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path + (" " + c.verdict));
        cloud.clear_requests();
        Reply reply = perform({.url = cloud.url(std::string("/device-api/device/") + c.path),
                               .method = "POST",
                               .body = c.body,
                               .headers = {"Content-Type: " + c.type, "sign: " + c.sign}});
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.body.starts_with(R"({"code":0)"), c.verdict == "ok") << reply.body;
        std::vector<cloudsim::Request> requests = cloud.requests();
        ASSERT_EQ(requests.size(), 1u);
        EXPECT_EQ(requests[0].verdict, c.verdict);
        EXPECT_EQ(requests[0].verified, c.verdict == "ok");
    }
}

} // namespace
