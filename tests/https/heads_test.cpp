// SPDX-License-Identifier: Apache-2.0
#include "https/heads.h"

#include <fstream>

#include <gmock/gmock.h>

#include "cloud/signing.h"
#include "support/router_rig.h"

namespace {

using testing::HasSubstr;

struct Built {
    char body[1024] = "untouched", sign[64] = "untouched", url[128] = "untouched";
    int result;

    explicit Built(decltype(post_runtime_head) *build)
        : result(build(body, sign, url, sizeof body, sizeof sign, sizeof url)) {}
};

std::string expected_sign(const char *name) {
    char sign[41];
    get_sign("Tq83mZc1wk", name, "simulated-device-secret", sign, sizeof sign, 1714550400);
    return sign;
}

TEST(Heads, BodySignatureAndAddress) {
    RouterRig rig;
    std::ofstream("/aptmp/runTime_oneDay.log")
        << R"([{"mac":"A1:00:00:00:00:01","name":"tv","runTime":61,"timestamp":5},{"name":"no mac"},7])";
    std::ofstream(UPGRADE_LOG) << "[t][f][1]buf:{\"newversion\": \"V1.0.3\", \"strategy\": \"force\"}\n";
    const std::string start = R"({"sn":"SIM2408000017","productKey":"Tq83mZc1wk","timestamp":1714550400)";
    auto expect = [&](decltype(post_runtime_head) *build, const std::string &rest, const std::string &path) {
        Built built(build);
        EXPECT_EQ(built.result, HEAD_OK);
        EXPECT_EQ(built.body, start + rest);
        EXPECT_EQ(built.sign, expected_sign("SIM2408000017"));
        EXPECT_EQ(built.url, "https://127.0.0.1:11443/device-api/device/" + path);
    };
    expect(post_timecontrol_head, "}", "get-settings");
    expect(post_runtime_head, R"(,"runtimeList":[{"mac":"A1:00:00:00:00:01","name":"tv","runTime":61}]})",
           "report-runtime");
    unlink("/aptmp/runTime_oneDay.log");
    expect(post_runtime_head, R"(,"runtimeList":[]})", "report-runtime");
    expect(post_upgradeprogress_head,
           R"(,"strategy":"force","progress":120,"oldVersion":"V1.0.3","newVersion":"V1.0.3"})",
           "upgrade-progress");
    rig.router.set_state("/vrop.ftinfo/iswversion", "\"V1.0.2\"");
    expect(post_upgradeprogress_head,
           R"(,"strategy":"force","progress":-1,"oldVersion":"V1.0.2","newVersion":"V1.0.3"})",
           "upgrade-progress");
}

TEST(Heads, DeviceWithoutSerialNumberIsNamedByItsMac) {
    RouterRig rig(R"({"vrop.ftinfo":{"sn":""}})");
    for (const auto &[mac, name] : {std::pair{"\"A1B2C3D4E5F6\"", "a1b2c3d4e5f6"},
                                    {"\"a1:b2:c3:d4:e5:f6\"", "a10000000000"},
                                    {"\"\"", "000000000000"}}) {
        rig.router.set_state("/vrop.ftinfo/mac", mac);
        Built built(post_timecontrol_head);
        EXPECT_THAT(built.body, HasSubstr(std::string("{\"sn\":\"") + name + "\""));
        EXPECT_EQ(built.sign, expected_sign(name));
    }
}

TEST(Heads, NothingIsWrittenForBadArgumentsAndShortBuffersAreCut) {
    RouterRig rig;
    char body[10] = "untouched", sign[10] = "untouched", url[10] = "untouched";
    for (auto *build : {post_runtime_head, post_timecontrol_head, post_upgradeprogress_head}) {
        EXPECT_EQ(build(nullptr, sign, url, 10, 10, 10), HEAD_BAD_ARGUMENT);
        EXPECT_EQ(build(body, nullptr, url, 10, 10, 10), HEAD_BAD_ARGUMENT);
        EXPECT_EQ(build(body, sign, url, 0, 10, 10), HEAD_BAD_ARGUMENT);
        EXPECT_EQ(build(body, sign, url, 10, 0, 10), HEAD_BAD_ARGUMENT);
        EXPECT_EQ(build(body, sign, url, 10, -1, 10), HEAD_BAD_ARGUMENT);
    }
    EXPECT_EQ(std::string(body) + sign + url, "untoucheduntoucheduntouched");
    EXPECT_EQ(post_timecontrol_head(body, sign, url, 10, 10, 10), HEAD_OK);
    EXPECT_EQ(std::string(body) + sign + url,
              "{\"sn\":\"SI" + expected_sign("SIM2408000017").substr(0, 9) + "https://1");
}

TEST(UpgradeInfo, ReadsTheFirstRecordOfTheLog) {
    const struct {
        const char *log;
        int result;
        const char *version, *strategy;
    } cases[] = {
        {"[t]x\n[t]buf:{\"newversion\": \"V2\", \"strategy\": \"s\"}\n[t]{\"newversion\": \"V3\"}\n", 0, "V2",
         "s"},
        {"", HEAD_SIGN_FAILED, "", ""},
        {"[t][f][1]nothing here\n", HEAD_SIGN_FAILED, "", ""},
        {"[t] newversion without a record\n", HEAD_JSON_FAILED, "", ""},
        {"[t]{\"newversion\": \"V2\", \"strat", HEAD_JSON_FAILED, "", ""},
        {"[t]{\"x newversion\": \"V2\"}", HEAD_NO_MEMBER, "", ""},
        {"[t]{\"newversion\": \"\", \"strategy\": \"s\"}", HEAD_EMPTY_MEMBER, "", ""},
        {"[t]{\"newversion\": \"V2\"}", HEAD_NO_MEMBER, "V2", ""},
        {"[t]{\"newversion\": \"V2\", \"strategy\": \"\"}", HEAD_EMPTY_MEMBER, "V2", ""},
        {"[t]{\"newversion\": \"V2.0.0.0\", \"strategy\": 1234567}", 0, "V2.0.0.", "1234567"},
    };
    for (const auto &c : cases) {
        std::ofstream("/tmp/upgrade.log") << c.log;
        char version[8] = {}, strategy[8] = {};
        EXPECT_EQ(get_upgrade_info("/tmp/upgrade.log", version, strategy, 8, 8), c.result) << c.log;
        EXPECT_STREQ(version, c.version) << c.log;
        EXPECT_STREQ(strategy, c.strategy) << c.log;
    }
    char text[8];
    EXPECT_EQ(get_upgrade_info("/tmp/none", text, text, 8, 8), HEAD_NO_LOG);
    EXPECT_EQ(get_upgrade_info(nullptr, text, text, 8, 8), HEAD_BAD_ARGUMENT);
    EXPECT_EQ(get_upgrade_info("/tmp/none", nullptr, text, 8, 8), HEAD_BAD_ARGUMENT);
    EXPECT_EQ(get_upgrade_info("/tmp/none", text, text, 0, 8), HEAD_BAD_ARGUMENT);
}

} // namespace
