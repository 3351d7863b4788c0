// SPDX-License-Identifier: Apache-2.0
// Which requests the simulated cloud takes, and what it says of those that it refuses.
#include "client.h"
#include <ctime>
#include <gmock/gmock.h>

namespace {

using cloudsim::Cloud;
using testing::HasSubstr;

cloudsim::Options known_device() {
    return {.devices = {{SERIAL, PRODUCT, SECRET}}};
}

TEST(CloudVerdict, SignedJson) {
    Cloud cloud(known_device());
    cloud.start();
    const std::string sign = signature(SERIAL, PRODUCT, "5");
    const std::string mine = R"({"sn":"SN0001","productKey":"PRODUCT1","timestamp":5)";
    std::string upper = sign;
    for (char &c : upper)
        c = static_cast<char>(std::toupper(c));
    struct {
        const char *path, *type;
        std::string body, sign, verdict;
    } const cases[] = {
        {"get-settings", "application/json", mine + "}", sign, "ok"},
        {"get-settings", "application/json; charset=utf-8", mine + "}", sign, "ok"},
        {"get-settings", "text/plain", mine + "}", sign, "Content-Type is not application/json"},
        {"get-settings", "application/json", mine + "}", "", "no sign header"},
        {"get-settings", "application/json", mine + "}", upper, "wrong signature"},
        {"get-settings", "application/json", mine + "}", sign.substr(0, 39), "wrong signature"},
        {"get-settings", "application/json", mine + "}", sign + "0", "wrong signature"},
        {"get-settings", "application/json", mine + "}", signature(SERIAL, PRODUCT, "6"), "wrong signature"},
        {"get-settings", "application/json", mine + "}", signature(SERIAL, PRODUCT, "5", "other"),
         "wrong signature"},
        {"get-settings", "application/json", mine + "} x", sign, "body is not a JSON object"},
        {"get-settings", "application/json", "", sign, "body is not a JSON object"},
        {"get-settings", "application/json", "[]", sign, "body is not a JSON object"},
        {"get-settings", "application/json", R"({"productKey":"PRODUCT1","timestamp":5})", sign,
         "sn missing"},
        {"get-settings", "application/json", R"({"sn":1,"productKey":"PRODUCT1","timestamp":5})", sign,
         "sn missing"},
        {"get-settings", "application/json", R"({"sn":"SN0001","timestamp":5})", sign, "productKey missing"},
        {"get-settings", "application/json", R"({"sn":"SN0001","productKey":"PRODUCT1","timestamp":"5"})",
         sign, "timestamp missing or not a number"},
        {"get-settings", "application/json", R"({"sn":"SN0001","productKey":"P2","timestamp":5})", sign,
         "unknown product P2"},
        {"get-settings", "application/json", R"({"sn":"SN2","productKey":"PRODUCT1","timestamp":5})", sign,
         "unknown device SN2"},
        {"report-runtime", "application/json", mine + "}", sign, "runtimeList missing"},
        {"report-runtime", "application/json", mine + R"(,"runtimeList":null})", sign, "ok"},
        {"upgrade-progress", "application/json", mine + R"(,"strategy":"1","progress":50,"oldVersion":"1"})",
         sign, "newVersion missing"},
        {"check-upgrade", "application/json", mine + R"(,"mac":"","checkType":2})", sign,
         "manufacturer missing"},
        {"check-upgrade", "application/json", mine + check_members("1") + "}", sign, "ok"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path + (" " + c.verdict));
        cloud.clear_requests();
        Reply reply = perform({.url = cloud.url(std::string("/device-api/device/") + c.path),
                               .method = "POST",
                               .body = c.body,
                               .headers = {std::string("Content-Type: ") + c.type, "sign: " + c.sign}});
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.body.starts_with(R"({"code":0)"), c.verdict == "ok") << reply.body;
        std::vector<cloudsim::Request> requests = cloud.requests();
        ASSERT_EQ(requests.size(), 1u);
        EXPECT_EQ(requests[0].verdict, c.verdict);
        EXPECT_EQ(requests[0].verified, c.verdict == "ok");
        EXPECT_EQ(requests[0].body, c.body);
        EXPECT_EQ(requests[0].headers.find("content-type")->second, c.type);
    }
}

// RFC 2202 has no text of our form; this digest was computed by Python's hmac module.
TEST(CloudVerdict, KnownSignature) {
    EXPECT_EQ(signature("SN0001", "PRODUCT1", "1700000000"), "dfa7b26b233677fe352c19402e07c8b686332c2c");
}

TEST(CloudVerdict, TimestampWindow) {
    cloudsim::Options options = known_device();
    options.timestamp_window = std::chrono::seconds(100);
    options.refusal_status = 403;
    Cloud cloud(options);
    cloud.start();
    for (auto [distance, status] : {std::pair{0, 200}, {-90, 200}, {90, 200}, {-200, 403}, {200, 403}}) {
        std::string time = std::to_string(std::time(nullptr) + distance);
        Reply reply = perform(
            {.url = cloud.url(cloudsim::get_settings_path),
             .method = "POST",
             .body = R"({"sn":"SN0001","productKey":"PRODUCT1","timestamp":)" + time + "}",
             .headers = {"Content-Type: application/json", "sign: " + signature(SERIAL, PRODUCT, time)}});
        EXPECT_EQ(reply.status, status) << distance << reply.body;
    }
}

TEST(CloudVerdict, AnyDevice) {
    Cloud cloud({.devices = {{"*", "*", SECRET}}});
    cloud.start();
    EXPECT_THAT(perform(signed_call(cloud, cloudsim::get_settings_path)).body, HasSubstr(R"("code":0)"));
}

TEST(CloudVerdict, ConfigUpload) {
    Cloud cloud(known_device());
    cloud.start();
    const std::string sign = "sign: " + signature(SERIAL, PRODUCT, "7");
    struct {
        std::vector<std::pair<std::string, std::string>> form;
        std::string name, sign, verdict;
    } const cases[] = {
        {{{"sn", SERIAL}, {"productKey", PRODUCT}, {"timestamp", "7"}, {"file", "{}"}},
         "M_A1:B2_1.config",
         sign,
         "ok"},
        {{{"sn", SERIAL}, {"productKey", PRODUCT}, {"timestamp", "7"}, {"file", "{}"}},
         "x y",
         sign,
         "file name refused"},
        {{{"sn", SERIAL}, {"productKey", PRODUCT}, {"timestamp", "7"}}, "f", sign, "file missing"},
        {{{"sn", SERIAL}, {"productKey", PRODUCT}, {"timestamp", "7x"}, {"file", "{}"}},
         "f",
         sign,
         "timestamp missing or not a number"},
        {{{"sn", SERIAL}, {"productKey", PRODUCT}, {"timestamp", "8"}, {"file", "{}"}},
         "f",
         sign,
         "wrong signature"},
        {{{"file", "{}"}}, "f", sign, "sn missing"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.verdict);
        cloud.clear_requests();
        Reply reply = perform({.url = cloud.url(cloudsim::upload_config_path),
                               .method = "POST",
                               .headers = {c.sign},
                               .form = c.form,
                               .file_name = c.name});
        EXPECT_EQ(reply.body == R"({"code":0})", c.verdict == "ok") << reply.body;
        ASSERT_EQ(cloud.requests().size(), 1u);
        EXPECT_EQ(cloud.requests()[0].verdict, c.verdict);
        EXPECT_EQ(cloud.uploaded(c.name).has_value(), c.verdict == "ok");
    }
}

} // namespace
