// SPDX-License-Identifier: Apache-2.0
// Bad requests for every row of the service table, and all of them at once.
#include <algorithm>
#include <thread>

#include "binding/tables.h"
#include "core/report_gate.h"
#include "services/service.h"
#include "services/service_rig.h"
#include "support/helper_stub.h"

namespace {

using enum Parameters;

// A row of the service table: how it takes its parameters, a request that it takes, and what
// becomes of a text that is refused. What becomes of other bad requests is tested by tests/system.
struct RequestRow {
    std::string service;
    Parameters parameters = unread;
    const char *request = nullptr;
    std::string refused = "-1:"; // no answer
};
const RequestRow REQUESTS[] = {
    // clang-format off
    {"tuningWifi", optional, R"({"radio":1})", "-1: 400 tuningWifi {}"},
    {"reboot"},
    {"recovery", optional, R"({"resetType":1})"},
    {"checkSignal", not_null, R"({"wifiSignal":1})"},
    {"checkInterference", not_null, R"({"wifiSignal":1})"},
    {"updatePwd", needed, R"({"user":"admin","oldPwd":"admin123","newPwd":"changed"})"},
    {"monitorSpeed"},
    {"apMonitorSpeed", not_null, R"({"mac":"02a0c9000001"})"},
    {"allApMonitorSpeed"},
    {"tuningBackupCfg"},
    {"cfgReport", needed, R"({"backupUrl":"http://h/"})"},
    {"relayScan", needed, R"({"radio":1})", "-1: 400 relayScan {}"},
    {"maxMonitorSpeed", not_null, R"({"url":"http://h/","time":1,"interval":1})"},
    {"cutUsb", optional, R"({"diskPath":"/mnt/usb0"})"},
    {"diskCheck"},
    {"nat"},
    {"connectCheck"},
    {"uploadLog", needed, R"({"uploadUrl":"http://h/","url":"u"})", "-1: 400 uploadLog {}"},
    {"outdiskFormat", needed, R"({"diskPath":"/mnt/usb"})", "-1: 400 outdiskFormat {}"},
    {"channelQuality", optional, R"({"radio":1})", "-1: 400 channelQuality {}"},
    {"portLinkSpeed"},
    {"rssiQualityCheck", optional, R"({"mac":"02a0c9000001"})", "-1: 400 rssiQualityCheck {}"},
    {"networkCheck", needed_may_be_empty, R"({"testUrl":"h","dnsTimeout":1})"},
    {"physicsInfo"},
    {"pingTest", not_null, R"({"times":1,"testUrl":"h"})"},
    {"remoteCap", needed, R"({"time":1,"interface":"eth9","filter":"tcp","uploadUrl":"http://h/","url":"u"})", "-1: 400 remoteCap {}"},
    {"remoteCfgExport", needed, R"({"uploadUrl":"http://h/","url":"u"})"},
    {"tuningMemory"},
    {"wirelessInterference", not_null, R"({"radio":1})"},
    // clang-format on
};

TEST(BadRequests, AreMadeForEveryRow) {
    for (size_t i = 0; service_map[i].name != nullptr; i++) {
        ASSERT_LT(i, std::size(REQUESTS));
        EXPECT_EQ(REQUESTS[i].service, service_map[i].name);
    }
}

TEST(BadRequests, ChangeNothingOrAreCallsOfWhoeverNeedsNone) {
    const HelperStub sync("sync");
    for (const RequestRow &row : REQUESTS)
        for (const char *request : {static_cast<const char *>(nullptr), "", " ", "x", "null",
                                    "{\"a\":\"\xc3\x28\"}", "{\"resetType\":1"}) {
            SCOPED_TRACE(row.service + (request ? request : " null"));
            ServiceRig rig;
            const std::string said = rig.call(row.service, request);
            const bool none = request == nullptr || *request == '\0';
            if (row.parameters == unread || (none && row.parameters == optional) ||
                (none && row.parameters == needed_may_be_empty && request)) {
                EXPECT_THAT(said, testing::StartsWith("0: 200 "));
                continue;
            }
            EXPECT_EQ(said, row.refused);
            const bool parsed = !none || (row.parameters == not_null && request);
            EXPECT_TRUE(has_logged(parsed ? "JsonStr Token fail" : "param is NULL"));
            EXPECT_THAT(rig.writes(),
                        testing::Each("vrop configexport {}")); // which comes before the request
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
