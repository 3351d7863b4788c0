// SPDX-License-Identifier: Apache-2.0
#include "core/registration.h"

#include <fstream>
#include <gmock/gmock.h>
#include <tuple>

#include "support/router_rig.h"

namespace {

using router::Fault;

// The text fields in the record's order: key, width, what replaces a missing text, and whether that also
// holds when there is no configuration at all. The hosts are this build's.
struct Field {
    const char *key;
    size_t width;
    std::string fallback;
    bool without_object;
};
const Field FIELDS[] = {
    {"productkey", 64, "Tq83mZc1wk", true},
    {"productsecret", 64, "8vbq4ne1xrtpds62", true},
    {"registerurl", 128, "https://HOST:11443/device-api/device/register", true},
    {"productid", 64, "router", true},
    {"cachepath", 128, "/tmp/qvtk.cache", true},
    {"logpath", 128, "/apvar/log/qvtk.log", true},
    {"upgradelogpath", 128, "/apetc/rvxa/qvtk_upgrade.log", true},
    {"devicesecret", 64, "", false},
    {"backupurl", 128, "https://HOST:11443/device-api/iot/device/upload-config-file", false},
    {"reporturl", 128, "https://HOST:11443/device-api/device/report-runtime", false},
    {"timeurl", 128, "https://HOST:11443/device-api/device/get-settings", false},
    {"upgradeprourl", 128, "https://HOST:11443/device-api/device/upgrade-progress", false},
    {"ecmanagerurl", 128, "https://HOST:11443/device-api/device/get-hcdn-package", false},
    {"tebralogpath", 128, "/apvar/log/qvtk_tebra.log", true},
};
const char CONFIG[] = "/vrop.qvtkconfig";
const char CACHE[] = "/tmp/qvtk.cache";

std::string without_hosts(std::string text) {
    for (size_t at = 0; (at = text.find("https://", at)) != std::string::npos; at += 8)
        text.replace(at + 8, text.find(":11443", at) - at - 8, "HOST");
    return text;
}

// Loads the record; its texts, one a line.
std::string loaded(register_config_record *record) {
    memset(record, '#', sizeof *record);
    EXPECT_EQ(get_qvtkRegister_info(record), 0);
    const char *at = reinterpret_cast<const char *>(record);
    std::string texts;
    for (const Field &field : FIELDS) {
        texts += std::string(at) + "\n";
        at += field.width;
    }
    return without_hosts(texts);
}

TEST(Registration, EachTextIsTakenCutOrReplaced) {
    RouterRig rig;
    register_config_record record;
    for (const char *given : {"{}", "", "value", "v*200"}) {
        std::string config, expected;
        for (const Field &field : FIELDS) {
            std::string text = given[0] == 'v' ? std::string(field.key) + given : "";
            if (text.ends_with("*200")) text.append(200, 'v');
            config += (config.empty() ? "{\"" : ",\"") + std::string(field.key) + "\":\"" + text + "\"";
            expected += (text.empty() ? field.fallback : text.substr(0, field.width - 1)) + "\n";
        }
        rig.router.set_state(CONFIG, given[0] == '{' ? given : config + "}");
        EXPECT_EQ(loaded(&record), expected) << given;
    }
    EXPECT_EQ(without_hosts(DEFAULT_CHECK_UPGRADE_URL), "https://HOST:11443/device-api/device/check-upgrade");
}

TEST(Registration, WithoutTheObjectDefaultsAndTheCachedSecretServe) {
    RouterRig rig;
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "vrop.qvtkconfig"});
    std::ofstream(CACHE) << R"({"secret":"from the cache"})";
    std::string expected;
    for (const Field &field : FIELDS)
        expected += (field.without_object ? field.fallback : "") + "\n";
    expected.insert(expected.find("\n\n") + 1, "from the cache"); // as the first text without a default
    register_config_record record;
    EXPECT_EQ(loaded(&record), expected);
    EXPECT_EQ(record.network_wait_time, 30);
    EXPECT_EQ(app_waitTime, 30);
}

TEST(Registration, WaitTimeAndFormatFlag) {
    RouterRig rig;
    register_config_record record;
    const std::pair<std::string, int32_t> rows[] = {
        {"null", 0}, {"\"-1\"", 0}, {"45", 45}, {"-2", -2}, {"99999999999", INT32_MAX}};
    for (const auto &[value, wait_time] : rows) {
        rig.router.set_state(CONFIG, "{\"networkwaittime\":" + value + "}");
        loaded(&record);
        EXPECT_EQ(record.network_wait_time, wait_time) << value;
        EXPECT_EQ(app_waitTime, wait_time);
    }
    EXPECT_STREQ(get_format_flag(), "");
    rig.router.set_state(CONFIG, "{\"formatflag\":\"" + std::string(200, 'f') + "\"}");
    loaded(&record);
    EXPECT_EQ(get_format_flag(), std::string(127, 'f'));
}

TEST(Registration, ConsoleTellsWhatWasFound) {
    RouterRig rig;
    rig.router.set_state(CONFIG, R"({"ecmanagerurl":"E","tebralogpath":"T","productkey":"K","timeurl":"U"})");
    register_config_record record;
    EXPECT_EQ(without_hosts(console_of([&] { loaded(&record); })),
              "get qvtk ubus info\nproductkey:K\n"
              "runtime_url:https://HOST:11443/device-api/device/report-runtime\ntimeurl:U\n"
              "upgradeprogress_url:https://HOST:11443/device-api/device/upgrade-progress\n"
              "ecmanagerurl:E\necmanager_url:E\nlogpath:T\n");
    EXPECT_EQ(console_of([] { EXPECT_EQ(get_qvtkRegister_info(nullptr), -1); }), "param is NULL\n");
}

TEST(DeviceSecret, IsReadFromTheCache) {
    set_default_logs();
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
        std::ofstream(CACHE) << cache;
        char output[8] = "before";
        EXPECT_EQ(get_deviceSecret(output, sizeof output), result) << cache;
        EXPECT_STREQ(output, secret) << cache;
    }
    EXPECT_TRUE(has_logged("JsonStr Token fail msg:{"));
    remove(CACHE);
    char output[8];
    for (auto [place, size] : {std::pair<char *, int>(output, 8), {nullptr, 8}, {output, 0}, {output, -1}})
        EXPECT_EQ(get_deviceSecret(place, size), -1);
    EXPECT_EQ(log_messages().back(), "param is NULL");
}

} // namespace
