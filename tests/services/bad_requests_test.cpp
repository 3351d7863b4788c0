// SPDX-License-Identifier: Apache-2.0
// Bad requests for every row of the service table, and all of them at once.
#include <algorithm>
#include <filesystem>
#include <thread>

#include "binding/tables.h"
#include "core/handles.h"
#include "core/report_gate.h"
#include "services/service_rig.h"

namespace {

using testing::AnyOf;
using testing::IsEmpty;
using testing::MatchesRegex;

// What a service may read, and a request that it takes (or refuses for what this device lacks).
struct RequestRow {
    const char *service, *request;
    std::vector<std::string> keys;
    bool answers_all = false; // also what is no JSON
};
const RequestRow REQUESTS[] = {
    {"recovery", R"({"resetType":1})", {"resetType"}},
    {"updatePwd", R"({"user":"admin","oldPwd":"admin123","newPwd":"changed"})", {"user", "oldPwd", "newPwd"}},
    {"cutUsb", R"({"diskPath":"/mnt/usb0"})", {"diskPath"}},
    {"checkSignal", R"({"wifiSignal":1})", {"wifiSignal"}},
    {"checkInterference", R"({"wifiSignal":1})", {"wifiSignal"}},
    {"wirelessInterference", R"({"radio":1})", {"radio"}},
    {"maxMonitorSpeed", R"({"url":"http://h/","time":1,"interval":1})", {"url", "time", "interval"}},
    {"apMonitorSpeed", R"({"mac":"02a0c9000001"})", {"mac"}},
    {"pingTest", R"({"times":1,"testUrl":"h"})", {"times", "testUrl"}},
    {"networkCheck", R"({"testUrl":"h","dnsTimeout":1})", {"testUrl", "dnsTimeout"}},
    {"tuningWifi", R"({"radio":1})", {"radio"}, true},
    {"channelQuality", R"({"radio":1})", {"radio"}, true},
    {"relayScan", R"({"radio":0})", {"radio"}, true},
    {"rssiQualityCheck", R"({"mac":"02a0c9000001"})", {"mac"}, true},
    {"outdiskFormat", R"({"diskPath":"/mnt/none"})", {"diskPath"}, true},
    {"uploadLog", R"({"uploadUrl":"h","url":"h"})", {"uploadUrl", "url"}, true},
    {"remoteCap",
     R"({"time":1,"interface":"none","filter":"udp","uploadUrl":"h","url":"h"})",
     {"time", "interface", "filter", "uploadUrl", "url"},
     true},
};

// The body of the only answer; "" when there is none. Fails unless it is JSON.
std::string only_answer() {
    const auto answers = recording_sdk::calls_of("TEBRA_SDK_Handle_Response");
    EXPECT_LE(answers.size(), 1U);
    if (answers.empty()) return "";
    const std::string &body = answers[0].arguments[3];
    json_tokener *tokener = json_tokener_new();
    json_tokener_set_flags(tokener, JSON_TOKENER_STRICT | JSON_TOKENER_VALIDATE_UTF8);
    EXPECT_TRUE(JsonRoot(json_tokener_parse_ex(tokener, body.c_str(), -1))) << body;
    json_tokener_free(tokener);
    EXPECT_THAT(answers[0].arguments[2], AnyOf("200", "400", "402"));
    return body;
}

TEST(BadRequests, ThatAreNoObjectsChangeNothing) {
    const std::string deep(10000, '['), text = '"' + std::string(10240, 'x') + '"';
    const char *const unparsable[] = {" ",
                                      "x",
                                      "{",
                                      "null",
                                      deep.c_str(),
                                      "{\"a\":\"\xc3\x28\"}",
                                      "{\"resetType\":1",
                                      "%s%n",
                                      "$(touch /tmp/ran)"};
    const char *const no_objects[] = {"[]",        "1", "true", "\"text\"", R"([{"resetType":1,"times":1}])",
                                      text.c_str()};
    for (const RequestRow &row : REQUESTS) {
        ServiceRig rig;
        const std::string state = rig.router.state(), refusal = "-1: 400 " + std::string(row.service) + " {}";
        for (const char *request : unparsable)
            EXPECT_EQ(rig.call(row.service, request), row.answers_all ? refusal : "-1:")
                << row.service << " " << request;
        for (const char *request : no_objects) {
            EXPECT_EQ(rig.call(row.service, request), refusal) << row.service << " " << request;
            EXPECT_THAT(rig.writes(), IsEmpty());
        }
        EXPECT_EQ(rig.router.state(), state) << row.service;
    }
}

// Each member of each request as something else. What is a text goes where texts go, as it stands; nobody
// reads it as a command, a format or JSON.
TEST(BadRequests, WithOddMembersAreAnsweredInJson) {
    const std::string long_text = '"' + std::string(10240, '\'') + '"';
    const std::string hostile =
        R"("\\\"'`touch /tmp/ran`$(touch /tmp/ran);|&<>%s%n%1$n*?~\u0001\n\r{}[]\u00fc\ud83d")";
    const std::string values[] = {"null",        "true",         "1.5",     "{}",
                                  "[]",          "[[1]]",        "-1",      "0",
                                  "-2147483649", "2147483648",   "1e300",   "99999999999999999999",
                                  R"("")",       R"("../../x")", R"("-c")", hostile,
                                  long_text};
    for (const RequestRow &row : REQUESTS)
        for (const std::string &key : row.keys)
            for (const std::string &value : values) {
                SCOPED_TRACE(std::string(row.service) + " " + key + " " + value.substr(0, 60));
                ServiceRig rig;
                JsonRoot request(json_tokener_parse(row.request));
                json_object_object_add(request.get(), key.c_str(), json_tokener_parse(value.c_str()));
                const std::string said = rig.call(row.service, json_object_to_json_string(request.get()));
                EXPECT_NE(only_answer(), "") << said;
                EXPECT_LE(ServiceRig::slept(), 601);
                EXPECT_EQ(set_flag, 0);
                EXPECT_EQ(rig.router.value("/account/user"), R"("admin")");
                EXPECT_FALSE(std::filesystem::exists("/tmp/ran"));
            }
}

TEST(BadRequests, OfNoServiceAreWorseThanNoneAtAll) {
    for (const service_row &row : service_map)
        for (const char *request : {static_cast<const char *>(nullptr), "", "{", "[]"}) {
            if (row.name == nullptr || row.name == std::string("tuningMemory")) continue;
            ServiceRig rig;
            SCOPED_TRACE(row.name);
            EXPECT_THAT(rig.call(row.name, request), AnyOf(MatchesRegex("-1:.*"), MatchesRegex("0: 200 .*")));
            only_answer();
        }
}

// The word of all services at once: whoever ends well lowers it, so it is down once all have.
TEST(Threads, HandlersAtOnceEachAnswerOnceAndLeaveTheReportsFree) {
    ServiceRig rig;
    constexpr int ROUNDS = 3, COPIES = 2;
    {
        std::vector<std::jthread> threads;
        for (const service_row &row : service_map) {
            if (row.name == nullptr || row.name == std::string("tuningMemory")) continue;
            const auto *known =
                std::find_if(std::begin(REQUESTS), std::end(REQUESTS), [&](const RequestRow &request) {
                    return request.service == std::string(row.name);
                });
            // a reboot or a reset in between would take the router away from the others
            if (known == std::begin(REQUESTS) || row.name == std::string("reboot")) continue;
            const char *parameters = known == std::end(REQUESTS) ? nullptr : known->request;
            for (int copy = 0; copy < COPIES; copy++)
                threads.emplace_back([&row, parameters] {
                    for (int round = 0; round < ROUNDS; round++)
                        row.handler(1, 1, nullptr, nullptr, parameters);
                });
        }
    }
    int flagged = 0;
    for (const recording_sdk::Call &answer : recording_sdk::calls_of("TEBRA_SDK_Handle_Response"))
        flagged += answer.arguments[4] == "checkSignal" || answer.arguments[4] == "checkInterference" ||
                   answer.arguments[4] == "maxMonitorSpeed";
    EXPECT_EQ(flagged, 3 * ROUNDS * COPIES);
    EXPECT_EQ(set_flag, 0);
}

} // namespace
