// SPDX-License-Identifier: Apache-2.0
#include "https/heads.h"

#include <fstream>

#include <gtest/gtest.h>

#include "cloud/signing.h"
#include "support/router_rig.h"

namespace {

struct Built {
    char body[1024] = "untouched", sign[64] = "untouched", url[128] = "untouched";
    int result;

    explicit Built(decltype(post_runtime_head) *build)
        : result(build(body, sign, url, sizeof body, sizeof sign, sizeof url)) {}
};

void write_file(const char *path, const std::string &text) {
    std::ofstream(path) << text;
}

std::string expected_sign(const char *name) {
    char sign[41];
    get_sign("Tq83mZc1wk", name, "simulated-device-secret", sign, sizeof sign, 1714550400);
    return sign;
}

TEST(Heads, BodySignatureAndAddress) {
    RouterRig rig;
    write_file("/aptmp/runTime_oneDay.log",
               R"([{"mac":"A1:00:00:00:00:01","name":"tv","runTime":61,"timestamp":5},{"name":"no mac"},7])");
    write_file(UPGRADE_LOG, "[t][f][1]buf:{\"newversion\": \"V1.0.3\", \"strategy\": \"force\"}\n");
    const std::string start = R"({"sn":"SIM2408000017","productKey":"Tq83mZc1wk","timestamp":1714550400)";
    struct Case {
        decltype(post_runtime_head) *build;
        std::string rest, path;
    };
    const Case cases[] = {
        {post_runtime_head, R"(,"runtimeList":[{"mac":"A1:00:00:00:00:01","name":"tv","runTime":61}]})",
         "report-runtime"},
        {post_timecontrol_head, "}", "get-settings"},
        {post_upgradeprogress_head,
         R"(,"strategy":"force","progress":120,"oldVersion":"V1.0.3","newVersion":"V1.0.3"})",
         "upgrade-progress"},
    };
    for (const Case &c : cases) {
        Built built(c.build);
        EXPECT_EQ(built.result, HEAD_OK);
        EXPECT_EQ(built.body, start + c.rest);
        EXPECT_EQ(built.sign, expected_sign("SIM2408000017"));
        EXPECT_EQ(built.url, "https://127.0.0.1:11443/device-api/device/" + c.path);
    }
    unlink("/aptmp/runTime_oneDay.log");
    EXPECT_EQ(Built(post_runtime_head).body, start + R"(,"runtimeList":[]})");
    rig.router.set_state("/vrop.ftinfo/iswversion", "\"V1.0.2\"");
    EXPECT_NE(
        std::string(Built(post_upgradeprogress_head).body).find(R"("progress":-1,"oldVersion":"V1.0.2")"),
        std::string::npos);
}

TEST(Heads, DeviceWithoutSerialNumberIsNamedByItsMac) {
    struct Case {
        const char *mac, *name;
    };
    RouterRig rig;
    rig.router.set_state("/vrop.ftinfo/sn", "\"\"");
    for (const Case &c : {Case{"\"A1B2C3D4E5F6\"", "a1b2c3d4e5f6"},
                          Case{"\"a1:b2:c3:d4:e5:f6\"", "a10000000000"}, Case{"\"\"", "000000000000"}}) {
        rig.router.set_state("/vrop.ftinfo/mac", c.mac);
        Built built(post_timecontrol_head);
        EXPECT_NE(std::string(built.body).find(std::string("\"sn\":\"") + c.name + "\""), std::string::npos)
            << c.mac;
        EXPECT_EQ(built.sign, expected_sign(c.name));
    }
}

TEST(Heads, NothingIsWrittenForBadArguments) {
    char body[64] = "untouched", sign[64] = "untouched", url[64] = "untouched";
    for (auto *build : {post_runtime_head, post_timecontrol_head, post_upgradeprogress_head}) {
        EXPECT_EQ(build(nullptr, sign, url, 64, 64, 64), HEAD_BAD_ARGUMENT);
        EXPECT_EQ(build(body, nullptr, url, 64, 64, 64), HEAD_BAD_ARGUMENT);
        EXPECT_EQ(build(body, sign, url, 0, 64, 64), HEAD_BAD_ARGUMENT);
        EXPECT_EQ(build(body, sign, url, 64, 0, 64), HEAD_BAD_ARGUMENT);
        EXPECT_EQ(build(body, sign, url, 64, -1, 64), HEAD_BAD_ARGUMENT);
    }
    EXPECT_STREQ(body, "untouched");
    EXPECT_STREQ(sign, "untouched");
    EXPECT_STREQ(url, "untouched");
}

TEST(Heads, BuffersThatAreTooSmallAreCut) {
    RouterRig rig;
    char body[10], sign[10], url[10];
    EXPECT_EQ(post_timecontrol_head(body, sign, url, sizeof body, sizeof sign, sizeof url), HEAD_OK);
    EXPECT_STREQ(body, "{\"sn\":\"SI");
    EXPECT_EQ(sign, expected_sign("SIM2408000017").substr(0, 9));
    EXPECT_STREQ(url, "https://1");
}

TEST(UpgradeInfo, ReadsTheFirstRecordOfTheLog) {
    struct Case {
        const char *log;
        int result;
        const char *version, *strategy;
    };
    const Case cases[] = {
        {"[t][f][1]x\n[t][f][2]buf:{\"newversion\": \"V2\", \"strategy\": \"s\"}\n[t]buf:{\"newversion\": "
         "\"V3\"}\n",
         0, "V2", "s"},
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
    for (const Case &c : cases) {
        write_file("/tmp/upgrade.log", c.log);
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
