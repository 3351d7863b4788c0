// SPDX-License-Identifier: Apache-2.0
// Bad requests for every row of the service table, and all of them at once.
#include <algorithm>
#include <filesystem>
#include <thread>

#include "binding/tables.h"
#include "core/handles.h"
#include "core/report_gate.h"
#include "services/service_rig.h"
#include "support/helper_stub.h"

namespace {

using testing::AnyOf;
using testing::Each;
using testing::StartsWith;

// A row of the service table: a request that it takes, what it may read of one, and what becomes of a text
// that is not JSON. A row without a request takes none.
struct RequestRow {
    std::string service;
    const char *request = nullptr;
    std::vector<std::string> keys = {};
    std::string unparsable = "-1:"; // no answer
};
const RequestRow REQUESTS[] = {
    {"tuningWifi", R"({"radio":1})", {"radio"}, "-1: 400 tuningWifi {}"},
    {"reboot"},
    {"recovery", R"({"resetType":1})", {"resetType"}},
    {"checkSignal", R"({"wifiSignal":1})", {"wifiSignal"}},
    {"checkInterference", R"({"wifiSignal":1})", {"wifiSignal"}},
    {"updatePwd", R"({"user":"admin","oldPwd":"admin123","newPwd":"changed"})", {"user", "oldPwd", "newPwd"}},
    {"monitorSpeed"},
    {"apMonitorSpeed", R"({"mac":"02a0c9000001"})", {"mac"}},
    {"allApMonitorSpeed"},
    {"tuningBackupCfg"},
    {"cfgReport", R"({"backupUrl":"http://h/"})", {"backupUrl"}},
    {"relayScan", R"({"radio":1})", {"radio"}, "-1: 400 relayScan {}"},
    {"maxMonitorSpeed", R"({"url":"http://h/","time":1,"interval":1})", {"url", "time", "interval"}},
    {"cutUsb", R"({"diskPath":"/mnt/usb0"})", {"diskPath"}},
    {"diskCheck"},
    {"nat"},
    {"connectCheck"},
    {"uploadLog", R"({"uploadUrl":"http://h/","url":"u"})", {"uploadUrl", "url"}, "-1: 400 uploadLog {}"},
    {"outdiskFormat", R"({"diskPath":"/mnt/usb"})", {"diskPath"}, "-1: 400 outdiskFormat {}"},
    {"channelQuality", R"({"radio":1})", {"radio"}, "-1: 400 channelQuality {}"},
    {"portLinkSpeed"},
    {"rssiQualityCheck", R"({"mac":"02a0c9000001"})", {"mac"}, "-1: 400 rssiQualityCheck {}"},
    {"networkCheck", R"({"testUrl":"h","dnsTimeout":1})", {"testUrl", "dnsTimeout"}},
    {"physicsInfo"},
    {"pingTest", R"({"times":1,"testUrl":"h"})", {"times", "testUrl"}},
    {"remoteCap",
     R"({"time":1,"interface":"eth9","filter":"tcp","uploadUrl":"http://h/","url":"u"})",
     {"time", "interface", "filter", "uploadUrl", "url"},
     "-1: 400 remoteCap {}"},
    {"remoteCfgExport", R"({"uploadUrl":"http://h/","url":"u"})", {"uploadUrl", "url"}},
    {"tuningMemory"},
    {"wirelessInterference", R"({"radio":1})", {"radio"}},
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

TEST(BadRequests, AreMadeForEveryRow) {
    for (size_t i = 0; service_map[i].name != nullptr; i++) {
        ASSERT_LT(i, std::size(REQUESTS));
        EXPECT_EQ(REQUESTS[i].service, service_map[i].name);
    }
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
        if (row.request == nullptr) continue;
        ServiceRig rig;
        const std::string state = rig.router.state(), refusal = "-1: 400 " + row.service + " {}";
        const auto refused = [&](const char *request, const std::string &said) {
            EXPECT_EQ(rig.call(row.service, request), said) << row.service << " " << request;
            EXPECT_THAT(rig.writes(), Each("vrop configexport {}")); // which comes before the request
        };
        for (const char *request : unparsable)
            refused(request, row.unparsable);
        for (const char *request : no_objects)
            refused(request, refusal);
        EXPECT_EQ(rig.router.state(), state) << row.service;
    }
}

TEST(BadRequests, ThatAreNotThereOrNotReadAreAnsweredAtMostOnce) {
    const HelperStub sync("sync");
    for (const RequestRow &row : REQUESTS)
        for (const char *request : {static_cast<const char *>(nullptr), "", "{", "[]"}) {
            SCOPED_TRACE(row.service + " " + (request ? request : "(null)"));
            ServiceRig rig;
            const std::string said = rig.call(row.service, request);
            EXPECT_THAT(said, AnyOf(StartsWith("0: 200 "), StartsWith(row.request ? "-1:" : "0: 200 ")));
            only_answer();
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
                SCOPED_TRACE(row.service + " " + key + " " + value.substr(0, 60));
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

// The word of all services at once: whoever ends well lowers it, so it is down once all have.
TEST(Threads, HandlersAtOnceEachAnswerOnceAndLeaveTheReportsFree) {
    const HelperStub sync("sync");
    ServiceRig rig;
    constexpr size_t ROUNDS = 3, COPIES = 2;
    {
        std::vector<std::jthread> threads;
        for (size_t i = 0; i < std::size(REQUESTS) * COPIES; i++) {
            const size_t row = i / COPIES;
            // they would take the router away from the others
            if (REQUESTS[row].service == "reboot" || REQUESTS[row].service == "recovery") continue;
            threads.emplace_back([row] {
                for (size_t round = 0; round < ROUNDS; round++)
                    service_map[row].handler(1, 1, nullptr, nullptr, REQUESTS[row].request);
            });
        }
    }
    EXPECT_EQ(recording_sdk::calls_of("TEBRA_SDK_Handle_Response").size(),
              (std::size(REQUESTS) - 2) * ROUNDS * COPIES);
    EXPECT_EQ(set_flag, 0);
}

} // namespace
