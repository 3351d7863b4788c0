// SPDX-License-Identifier: Apache-2.0
// What the upgrade check makes of any reply, in whatever pieces it comes.
#include <algorithm>
#include <cstring>

#include <gmock/gmock.h>

#include "core/registration.h"
#include "https/firmware_rig.h"
#include "https/requests.h"
#include "https/upgrade.h"

namespace {

using testing::ElementsAre;

constexpr size_t CHECK_REPLY = 2048;
constexpr long SLOW_MACHINE = 50000; // milliseconds for 200,000 pieces under a sanitizer
const ImagePaths PATHS = {IMAGE_FILE, IMAGE_INSTALL_FILE};

// The buffer as pieces written over its start leave it.
std::string kept(const std::string &reply, size_t piece) {
    std::string buffer(CHECK_REPLY, '\0');
    for (size_t at = 0; at < reply.size(); at += piece) {
        size_t length = std::min({piece, reply.size() - at, CHECK_REPLY - 1});
        buffer.replace(0, length, reply, at, length);
    }
    return buffer.c_str();
}

std::string repeat(const std::string &text, size_t count) {
    std::string all;
    for (size_t i = 0; i < count; i++)
        all += text;
    return all;
}

struct Reply {
    const char *name;
    std::string body;
    int code;            // what the check answers when the reply arrives in one piece
    std::string version; // what it then takes for the new version
};

void PrintTo(const Reply &reply, std::ostream *out) {
    *out << reply.name;
}

const Reply REPLIES[] = {
    {"empty", "", -1, ""},
    {"not_json", "<html>503</html>", -1, ""},
    {"nul_bytes", std::string("{\"code\"\0:0}", 11), -1, ""},
    {"only_nul_bytes", std::string(100, '\0'), -1, ""},
    {"huge", "{\"code\":0,\"data\":{\"version\":\"" + std::string(200 * 1024, 'v') + "\"}}", -1, ""},
    {"deep", repeat("[", 1000) + repeat("]", 1000), -1, ""},
    {"deeper", repeat("{\"a\":", 10000) + "1" + repeat("}", 10000), -1, ""},
    {"array", "[0]", -1, ""},
    {"number", "0", -1, ""},
    {"null", "null", -1, ""},
    {"no_code", "{\"data\":{\"version\":\"V9\"}}", -1, ""},
    {"code_as_text", "{\"code\":\"0\",\"data\":{\"version\":\"V9\"}}", 0, "V9"},
    {"refused", "{\"code\":4001,\"data\":{\"version\":\"V9\"}}", 4001, "old"},
    {"no_data", "{\"code\":0}", 0, ""},
    {"data_as_text", "{\"code\":0,\"data\":\"V9\"}", 0, ""},
    {"data_null", "{\"code\":0,\"data\":null}", 0, ""},
    {"members_of_other_types",
     "{\"code\":0,\"data\":{\"id\":\"x\",\"size\":\"12\",\"version\":9,\"md5\":[1],\"url\":{\"a\":1}}}", 0,
     "9"},
    {"long_members",
     "{\"code\":0,\"data\":{\"version\":\"" + std::string(300, 'v') + "\",\"md5\":\"" +
         std::string(300, 'a') + "\"}}",
     0, std::string(127, 'v')},
};

class HostileReply : public testing::TestWithParam<std::tuple<Reply, size_t>> {};

TEST_P(HostileReply, StaysInTheBufferAndIsJudgedByWhatItHolds) {
    const auto &[reply, piece] = GetParam();
    FirmwareRig rig(PATHS);
    http_upgrade_start();
    curl_spy::limit_to(SLOW_MACHINE);
    strcpy(upgrade_request.response.version, "old");
    cloudsim::Fault fault;
    fault.endpoint = "check-upgrade";
    fault.body = reply.body;
    fault.pieces = piece;
    rig.cloud.fault(fault);

    int code = query_upgrade();
    const std::string expected = kept(reply.body, piece);
    EXPECT_TRUE(has_logged("#http upgrade# response:" + expected.substr(0, expected.find('\n'))));
    if (reply.body.size() <= std::min(piece, CHECK_REPLY - 1)) {
        EXPECT_EQ(code, reply.code);
        EXPECT_EQ(upgrade_request.response.version, reply.code == -1 ? "old" : reply.version);
    } else {
        EXPECT_EQ(code, -1);
    }
    // and the next one is understood
    EXPECT_EQ(query_upgrade(), 0);
    EXPECT_STREQ(upgrade_request.response.version, "V2.0.0");
}

INSTANTIATE_TEST_SUITE_P(Replies, HostileReply,
                         testing::Combine(testing::ValuesIn(REPLIES), testing::Values(1, 1024, 16384)),
                         [](const testing::TestParamInfo<std::tuple<Reply, size_t>> &row) {
                             return std::string(std::get<0>(row.param).name) + "_by_" +
                                    std::to_string(std::get<1>(row.param));
                         });

TEST(ReplyBuffer, KeepsTheLastPieceAndItsTerminator) {
    char room[8] = "guard!!";
    ReplyBuffer buffer = {room, 5};
    memset(room, 0, buffer.size);
    char one[] = "abcdefgh";
    char two[] = "XY";
    EXPECT_EQ(keep_last_piece(one, 2, 4, &buffer), 8U);
    EXPECT_STREQ(room, "abcd");
    EXPECT_EQ(keep_last_piece(two, 1, 2, &buffer), 2U);
    EXPECT_STREQ(room, "XYcd");
    EXPECT_STREQ(room + 5, "!!");
    EXPECT_EQ(keep_last_piece(nullptr, 1, 2, &buffer), static_cast<size_t>(-1));
    EXPECT_EQ(keep_last_piece(two, 1, 2, nullptr), static_cast<size_t>(-1));
    EXPECT_EQ(req_reply(two, 1, 2, nullptr), 2U);
    ReplyBuffer nothing = {nullptr, 0};
    EXPECT_EQ(req_reply(two, 1, 2, &nothing), 2U);
}

TEST(Requests, SetTheirOptionsInOrder) {
    FirmwareRig rig(PATHS);
    http_upgrade_start();
    curl_spy::clear();
    char text[64] = {};
    ReplyBuffer reply = {text, sizeof text};
    const std::string check = rig.cloud.url(cloudsim::check_upgrade_path);
    curl_post("{\"a\":1}", 7, &reply, check.c_str(), 1714550400);
    std::string sign = std::get<1>(*rig.cloud.requests().at(0).headers.find("sign"));
    EXPECT_EQ(sign.size(), 40U);
    EXPECT_THAT(curl_spy::options(),
                ElementsAre("TIMEOUT=15", "URL=" + check,
                            "HTTPHEADER=Content-Type: application/json|sign: " + sign, "POST=1",
                            "POSTFIELDSIZE=7", "POSTFIELDS={\"a\":1}", "WRITEFUNCTION=set", "WRITEDATA=set",
                            "SSL_VERIFYPEER=0", "SSL_VERIFYHOST=0", "NOSIGNAL=1"));
    curl_spy::clear();
    EXPECT_EQ(curl_download_file(rig.url().c_str()), 0);
    EXPECT_THAT(curl_spy::options(),
                ElementsAre("URL=" + rig.url(), "SSL_VERIFYPEER=0", "SSL_VERIFYHOST=0", "NOPROGRESS=0",
                            "WRITEDATA=set", "TIMEOUT=600", "CONNECTTIMEOUT=60", "NOSIGNAL=1"));
    curl_spy::clear();
    EXPECT_EQ(curl_post(nullptr, 0, &reply, check.c_str(), 1714550400), 2);
    EXPECT_THAT(curl_spy::options(), testing::IsEmpty());
}

TEST(Requests, CheckNamesTheDevice) {
    FirmwareRig rig(PATHS);
    http_upgrade_start();
    EXPECT_EQ(query_upgrade(), 0);
    const cloudsim::Request request = rig.cloud.requests().at(0);
    EXPECT_TRUE(request.verified) << request.verdict;
    EXPECT_EQ(request.body,
              R"({"productKey":"Tq83mZc1wk","sn":"SIM2408000017","timestamp":1714550400,)"
              R"("mac":"a1b2c3d4e5f6","checkType":2,"manufacturer":"RVXA","hardwareVersion":"H2.1",)"
              R"("firmwareVersion":"V1.0.3","areaCode":"330000"})");
}

TEST(Requests, RetryTheCheckAfterFiveTenAndFifteenSeconds) {
    struct Case {
        int failures;
        std::vector<moving_clock::Millis> pauses;
        bool answered;
    };
    const Case cases[] = {
        {1, {5000}, true}, {3, {5000, 10000, 15000}, true}, {4, {5000, 10000, 15000}, false}};
    for (const Case &c : cases) {
        FirmwareRig rig(PATHS);
        http_upgrade_start();
        moving_clock::clear_pauses();
        cloudsim::Fault fault;
        fault.endpoint = "check-upgrade";
        fault.count = c.failures;
        fault.drop = true;
        rig.cloud.fault(fault);
        EXPECT_EQ(query_upgrade() == 0, c.answered);
        EXPECT_EQ(moving_clock::pauses(), c.pauses);
        unlink(IMAGE_INSTALL_FILE);
    }
}

TEST(Requests, AddressesTooShortToNameAServerGiveWayToTheDefault) {
    struct Case {
        const char *given; // JSON
        const char *taken; // null: the default
    };
    RouterRig rig;
    for (const Case &c : {Case{"\"http://\"", nullptr}, Case{"\"http://a\"", "http://a"},
                          Case{"\"\"", nullptr}, Case{"5", nullptr}}) {
        rig.router.set_state("/vrop.fota/checkaddr", c.given);
        load_upgrade_request();
        EXPECT_STREQ(upgrade_request.check_url, c.taken ? c.taken : DEFAULT_CHECK_UPGRADE_URL) << c.given;
    }
    rig.router.erase_state("/vrop.fota/checkaddr");
    load_upgrade_request();
    EXPECT_STREQ(upgrade_request.check_url, DEFAULT_CHECK_UPGRADE_URL);
}

} // namespace
