// SPDX-License-Identifier: Apache-2.0
#include "core/registration.h"

#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <tuple>

#include "core/device.h"
#include "core/log.h"
#include "support/router_rig.h"

namespace {

using router::Fault;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// The text fields as the loader takes them: key, place, width, what replaces a missing one, and whether that
// also holds when there is no configuration at all.
struct Field {
    const char *key;
    std::string (*value)(const register_config_record &record);
    size_t width;
    std::string fallback;
    bool without_object;
};

#define FIELD(key, member)                                                                                   \
    key, [](const register_config_record &record) { return std::string(record.member); },                    \
        sizeof(register_config_record::member)

// An address on the same server as the one for upgrade checks.
std::string device_server(const std::string &name) {
    std::string address = DEFAULT_CHECK_UPGRADE_URL;
    return address.substr(0, address.rfind('/') + 1) + name;
}

std::vector<Field> fields() {
    return {
        {FIELD("productkey", product_key), "Tq83mZc1wk", true},
        {FIELD("productsecret", product_secret), "8vbq4ne1xrtpds62", true},
        {FIELD("registerurl", register_url), device_server("register"), true},
        {FIELD("productid", product_id), "router", true},
        {FIELD("cachepath", cache_path), "/tmp/qvtk.cache", true},
        {FIELD("logpath", log_path), "/apvar/log/qvtk.log", true},
        {FIELD("upgradelogpath", upgrade_log_path), "/apetc/rvxa/qvtk_upgrade.log", true},
        {FIELD("devicesecret", device_secret), "", false},
        {FIELD("reporturl", report_url), device_server("report-runtime"), false},
        {FIELD("timeurl", time_url), device_server("get-settings"), false},
        {FIELD("upgradeprourl", upgrade_progress_url), device_server("upgrade-progress"), false},
        {FIELD("ecmanagerurl", storage_url), device_server("get-hcdn-package"), false},
        {FIELD("tebralogpath", sdk_log_path), "/apvar/log/qvtk_tebra.log", true},
    };
}

const char CONFIG[] = "/vrop.qvtkconfig";

register_config_record load() {
    register_config_record record;
    memset(&record, '#', sizeof record);
    EXPECT_EQ(get_qvtkRegister_info(&record), 0);
    return record;
}

TEST(Registration, EachTextIsTakenCutOrReplaced) {
    RouterRig rig;
    for (const Field &field : fields()) {
        SCOPED_TRACE(field.key);
        const std::string long_text(200, 'v');
        for (const std::string &given : {std::string("value"), std::string(), long_text}) {
            rig.router.set_state(CONFIG, "{\"" + std::string(field.key) + "\":\"" + given + "\"}");
            EXPECT_EQ(field.value(load()), given.empty() ? field.fallback : given.substr(0, field.width - 1));
        }
        rig.router.set_state(CONFIG, "{}");
        EXPECT_EQ(field.value(load()), field.fallback);
    }
    rig.router.set_state(CONFIG, "{}");
    std::string backup = load().backup_url;
    EXPECT_THAT(backup, StartsWith("https://"));
    EXPECT_THAT(backup, EndsWith(":11443/device-api/iot/device/upload-config-file"));
    EXPECT_THAT(std::string(DEFAULT_CHECK_UPGRADE_URL), EndsWith(":11443/device-api/device/check-upgrade"));
}

TEST(Registration, WithoutTheObjectDefaultsAndTheCachedSecretServe) {
    RouterRig rig;
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "vrop.qvtkconfig"});
    std::ofstream("/tmp/qvtk.cache") << R"({"secret":"from the cache"})";
    register_config_record record = load();
    for (Field field : fields()) {
        if (std::string(field.key) == "devicesecret")
            field = {
                .key = field.key, .value = field.value, .fallback = "from the cache", .without_object = true};
        EXPECT_EQ(field.value(record), field.without_object ? field.fallback : "") << field.key;
    }
    EXPECT_STREQ(record.backup_url, "");
    EXPECT_EQ(record.network_wait_time, 30);
    EXPECT_EQ(app_waitTime, 30);
}

TEST(Registration, WaitTimeAndFormatFlag) {
    RouterRig rig;
    const std::pair<const char *, int32_t> rows[] = {{"{}", 0},
                                                     {R"({"networkwaittime":"-1"})", 0},
                                                     {R"({"networkwaittime":45})", 45},
                                                     {R"({"networkwaittime":-2})", -2},
                                                     {R"({"networkwaittime":99999999999})", INT32_MAX}};
    for (auto [config, wait_time] : rows) {
        rig.router.set_state(CONFIG, config);
        EXPECT_EQ(load().network_wait_time, wait_time) << config;
        EXPECT_EQ(app_waitTime, wait_time);
    }
    EXPECT_STREQ(get_format_flag(), "");
    rig.router.set_state(CONFIG, "{\"formatflag\":\"" + std::string(200, 'f') + "\"}");
    load();
    EXPECT_EQ(get_format_flag(), std::string(127, 'f'));
}

TEST(Registration, ConsoleTellsWhatWasFound) {
    RouterRig rig;
    rig.router.set_state(CONFIG, R"({"ecmanagerurl":"E","tebralogpath":"T","productkey":"K","timeurl":"U"})");
    testing::internal::CaptureStdout();
    load();
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "get qvtk ubus info\nproductkey:K\nruntime_url:" + device_server("report-runtime") +
                  "\ntimeurl:U\nupgradeprogress_url:" + device_server("upgrade-progress") +
                  "\necmanagerurl:E\necmanager_url:E\nlogpath:T\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(get_qvtkRegister_info(nullptr), -1);
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "param is NULL\n");
}

TEST(DeviceSecret, IsReadFromTheCache) {
    set_log_filepath(nullptr);
    const std::tuple<std::string, int, const char *> rows[] = {
        {R"({"secret":"abcdefghij"})", 0, "abcdefg"},
        {R"({"secret":null})", 0, "before"},
        {"[]", 0, "before"},
        {"", -1, "before"},
        {"{", -1, "before"},
        {std::string(1024 - 17, ' ') + R"({"secret":"last"})", 0, "last"},
        {std::string(1024 - 16, ' ') + R"({"secret":"last"})", -1, "before"},
    };
    for (const auto &[cache, result, secret] : rows) {
        std::ofstream("/tmp/qvtk.cache") << cache;
        char output[8] = "before";
        EXPECT_EQ(get_deviceSecret(output, sizeof output), result) << cache;
        EXPECT_STREQ(output, secret) << cache;
    }
    EXPECT_TRUE(has_logged("JsonStr Token fail msg:{"));
    remove("/tmp/qvtk.cache");
    char output[8] = "before";
    EXPECT_EQ(get_deviceSecret(output, sizeof output), -1);
    EXPECT_EQ(get_deviceSecret(nullptr, 8), -1);
    EXPECT_EQ(get_deviceSecret(output, 0), -1);
    EXPECT_EQ(get_deviceSecret(output, -1), -1);
    EXPECT_TRUE(has_logged("param is NULL"));
}

TEST(NetworkStatus, IsUpOnlyWhenConnected) {
    RouterRig rig;
    const std::pair<const char *, int> rows[] = {
        {R"("Connected")", 1}, {R"("connected")", 0}, {R"("Connected ")", 0}, {"1", 0}, {"null", 0}};
    for (auto [status, up] : rows) {
        rig.router.add_fault({.kind = Fault::Kind::Reply,
                              .object = "vrop.waninfo",
                              .reply = "{\"vrop.waninfo\":{\"status\":" + std::string(status) + "}}"});
        EXPECT_EQ(get_networkStatus(), up) << status;
        rig.router.clear_faults();
    }
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "vrop.waninfo"});
    EXPECT_EQ(get_networkStatus(), 0);
    EXPECT_TRUE(has_logged("get network status fail"));
}

} // namespace
