// SPDX-License-Identifier: Apache-2.0
// Body, signature and address of what the helper programs send.
#include "https/helper_requests.h"

#include <fstream>

#include <gmock/gmock.h>
#include <unistd.h>

#include "devices/runtime_report.h"
#include "helper.h"
#include "https/signing.h"
#include "support/curl_spy.h"
#include "support/router_rig.h"
#include "upgrade/upgrade_report.h"

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

TEST(HelperRequests, BodySignatureAndAddress) {
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

TEST(HelperRequests, DeviceWithoutSerialNumberIsNamedByItsMac) {
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

TEST(HelperRequests, NothingIsWrittenForBadArgumentsAndShortBuffersAreCut) {
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

TEST(HelperLimits, EndTheTransferAndTheProgram) {
    // what start_helper takes away is only the child's
    EXPECT_EXIT((start_helper("x"), _exit(static_cast<int>(alarm(0)))),
                testing::ExitedWithCode(PROGRAM_SECONDS), "");
    Transfer transfer;
    Answer answer = {.text = {}, .limit = REPLY_LIMIT};
    EXPECT_FALSE(exchange(&transfer, "http://127.0.0.1:1/", &answer));
    EXPECT_THAT(curl_spy.options, testing::IsSupersetOf({"CONNECTTIMEOUT=15", "TIMEOUT=120"}));
}

} // namespace
