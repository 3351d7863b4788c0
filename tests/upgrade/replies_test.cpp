// SPDX-License-Identifier: Apache-2.0
// What the upgrade check sends, and what it makes of any reply, in whatever pieces that comes.
#include <algorithm>
#include <cstring>
#include <functional>

#include <gmock/gmock.h>

#include "core/log.h"
#include "core/registration.h"
#include "https/requests.h"
#include "support/cloud_rig.h"
#include "support/curl_spy.h"
#include "support/moving_clock.h"
#include "upgrade/firmware.h"
#include "upgrade/https_upgrade.h"

namespace {

constexpr size_t CHECK_REPLY = 2048;
constexpr long SLOW_MACHINE = 50000; // milliseconds for 200,000 pieces under a sanitizer
constexpr char CHECK_URL[] = "https://127.0.0.1:11443/device-api/device/check-upgrade";

struct CheckRig : CloudRig {
    CheckRig() {
        cloud.offer({.name = "router.img", .image = "image", .version = "V2.0.0", .strategy = "force"});
        http_upgrade_start();
    }
};

struct Reply {
    std::string body;
    int code = -1;               // what the check answers when the reply arrives in one piece
    std::string version = "old"; // what it then takes for the new version
};

std::string version_of(const std::string &text) {
    return R"({"code":0,"data":{"version":")" + text + "\"}}";
}

const Reply REPLIES[] = {
    {""},
    {"<html>503</html>"},
    {std::string("{\"code\"\0:0}", 11)},
    {std::string(100, '\0')},
    {version_of(std::string(200 * 1024, 'v'))},
    {std::string(1000, '[') + std::string(1000, ']')},
    {std::string(10000, '[') + std::string(10000, ']')},
    {"[0]"},
    {"0"},
    {"null"},
    {R"({"data":{"version":"V9"}})"},
    {R"({"code":"0","data":{"version":"V9"}})", 0, "V9"},
    {R"({"code":4001,"data":{"version":"V9"}})", 4001},
    {R"({"code":4294967296,"data":{"version":"V9"}})", 2147483647},
    {R"({"code":"denied","data":{"version":"V9"}})"},
    {R"({"code":false,"data":{"version":"V9"}})"},
    {R"({"code":0})", 0, ""},
    {R"({"code":0,"data":"V9"})", 0, ""},
    {R"({"code":0,"data":null})", 0, ""},
    {R"({"code":0,"data":{"id":"x","size":"12","version":9,"md5":[1],"url":{"a":1}}})", 0, "9"},
    {version_of(std::string(300, 'v')), 0, std::string(127, 'v')},
};

TEST(Check, HostileRepliesStayInTheBufferAndAreJudgedByWhatItHolds) {
    CheckRig rig;
    curl_spy.limits = {{POST_SECONDS, SLOW_MACHINE}};
    for (const Reply &reply : REPLIES)
        for (size_t piece : {1, 1024, 16384}) {
            SCOPED_TRACE(reply.body.substr(0, 80) + " by " + std::to_string(piece));
            clear_main_log();
            strcpy(upgrade_request.response.version, "old");
            rig.cloud.fault({.endpoint = "check-upgrade", .body = reply.body, .pieces = piece});
            const bool whole = reply.body.size() <= std::min(piece, CHECK_REPLY - 1);
            EXPECT_EQ(query_upgrade(), whole ? reply.code : -1);
            EXPECT_EQ(upgrade_request.response.version, whole ? reply.version : "old");
            EXPECT_TRUE(!whole || has_logged(std::string("#http upgrade# response:") + reply.body.c_str()));
            // and the next one is understood
            EXPECT_EQ(query_upgrade(), 0);
            EXPECT_STREQ(upgrade_request.response.version, "V2.0.0");
        }
}

TEST(Check, NamesTheDeviceAsDoesTheReport) {
    CheckRig rig;
    EXPECT_EQ(query_upgrade(), 0);
    report_upgrade_progress(-3, "why");
    const std::vector<cloudsim::Request> requests = rig.cloud.requests();
    EXPECT_EQ(requests.at(0).body,
              R"({"productKey":"Tq83mZc1wk","sn":"SIM2408000017","timestamp":1714550400,)"
              R"("mac":"a1b2c3d4e5f6","checkType":2,"manufacturer":"RVXA","hardwareVersion":"H2.1",)"
              R"("firmwareVersion":"V1.0.3","areaCode":"330000"})");
    EXPECT_EQ(requests.at(1).body,
              R"({"productKey":"Tq83mZc1wk","sn":"SIM2408000017","timestamp":1714550400,"strategy":"force",)"
              R"("progress":-3,"oldVersion":"V1.0.3","newVersion":"V2.0.0","reason":"why"})");
    EXPECT_TRUE(requests[0].verified && requests[1].verified);
}

TEST(Check, AReportThatFailsIsToldInBothLogs) {
    CheckRig rig;
    for (const bool answers : {true, false}) {
        clear_main_log();
        delete_upgrade_log();
        rig.cloud.fault({.endpoint = "upgrade-progress", .body = "<html>", .drop = !answers});
        report_upgrade_progress(50, "");
        EXPECT_EQ(has_logged("#http upgrade# string parse to json error"), answers);
        EXPECT_EQ(has_logged("#http upgrade# curl_post error:ret = 0"), answers);
        for (const std::string &log : {main_log(), upgrade_log()})
            EXPECT_THAT(log, testing::HasSubstr("#http upgrade# curl_post error:ret = "));
    }
}

TEST(Check, IsRetriedAfterFiveTenAndFifteenSeconds) {
    const std::vector<moving_clock::Millis> pauses = {5000, 10000, 15000};
    CheckRig rig;
    for (int failures : {1, 3, 4}) {
        moving_clock::clear_pauses();
        rig.cloud.fault({.endpoint = "check-upgrade", .count = failures, .drop = true});
        EXPECT_EQ(query_upgrade() == 0, failures < 4);
        EXPECT_EQ(moving_clock::pauses(),
                  std::vector(pauses.begin(), pauses.begin() + std::min(failures, 3)));
    }
}

TEST(Check, AddressesTooShortToNameAServerGiveWayToTheDefault) {
    RouterRig rig;
    for (const std::string given : {R"("http://")", R"("")", "5", R"("http://a")"}) {
        rig.router.set_state("/vrop.fota/checkaddr", given);
        load_upgrade_request();
        EXPECT_STREQ(upgrade_request.check_url, given.size() > 9 ? "http://a" : DEFAULT_CHECK_UPGRADE_URL);
    }
}

TEST(ReplyBuffer, KeepsTheLastPieceAndIsNotOverrun) {
    char room[] = "0123guard", piece[] = "abcdefgh", next[] = "XY";
    ReplyBuffer buffer = {room, 5}, nothing = {nullptr, 0};
    EXPECT_EQ(keep_last_piece(piece, 2, 4, &buffer), 8U);
    EXPECT_STREQ(room, "abcd");
    EXPECT_EQ(keep_last_piece(next, 1, 2, &buffer), 2U);
    EXPECT_EQ(std::string(room, 9), std::string("XYcd\0uard", 9));
    EXPECT_EQ(keep_last_piece(nullptr, 1, 2, &buffer), static_cast<size_t>(-1));
    EXPECT_EQ(keep_last_piece(piece, 1, 2, nullptr), static_cast<size_t>(-1));
    EXPECT_EQ(req_reply(piece, 1, 2, nullptr), 2U);
    EXPECT_EQ(req_reply(piece, 1, 2, &nothing), 2U);
}

std::string options_of(const std::function<void()> &request) {
    curl_spy.options.clear();
    request();
    std::string options;
    for (const std::string &option : curl_spy.options)
        options += (options.empty() ? "" : " ") + option;
    return options;
}

TEST(Requests, SetTheirOptionsInOrder) {
    CheckRig rig;
    char text[64] = {};
    ReplyBuffer reply = {text, sizeof text};
    EXPECT_EQ(curl_post(nullptr, 0, &reply, CHECK_URL, 1714550400), 2);
    EXPECT_EQ(
        options_of([&] { curl_post("{\"a\":1}", 7, &reply, CHECK_URL, 1714550400); }),
        std::string("PROTOCOLS_STR=set TIMEOUT=15 URL=") + CHECK_URL +
            " HTTPHEADER=Content-Type: application/json|sign: b0e56a688b5019f5af5e38fd07e66b7e7b4f781f| "
            "POST=1 POSTFIELDSIZE=7 POSTFIELDS={\"a\":1} WRITEFUNCTION=set WRITEDATA=set "
            "SSL_VERIFYPEER=0 SSL_VERIFYHOST=0 NOSIGNAL=1");
    const std::string image = rig.cloud.url("/firmware/router.img");
    const std::string start = "PROTOCOLS_STR=set URL=" + image;
    const std::string rest = " WRITEFUNCTION=set WRITEDATA=set TIMEOUT=600 CONNECTTIMEOUT=60 NOSIGNAL=1 "
                             "HTTP_CONTENT_DECODING=0";
    EXPECT_EQ(options_of([&] { curl_download_file(image.c_str()); }),
              start + " SSL_VERIFYPEER=0 SSL_VERIFYHOST=0 NOPROGRESS=0" + rest);
    EXPECT_EQ(options_of([&] { fetch_image(image.c_str(), "/tmp/image", 0, ProgressMeter::hidden); }),
              start + " SSL_VERIFYPEER=0 SSL_VERIFYHOST=0" + rest);
}

} // namespace
