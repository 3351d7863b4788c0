// SPDX-License-Identifier: Apache-2.0
// The services that act on the router, check its radios and tell its rates: what they need, do and answer.
#include "core/report_gate.h"
#include "services/lan_rates.h"
#include "services/service_rig.h"
#include "support/helper_stub.h"

namespace {

using router::Fault;

const Fault REFUSED = {.kind = Fault::Kind::Result, .object = "*", .value = 2};
const Fault SILENT = {.kind = Fault::Kind::Status, .object = "*", .value = 7};
const std::string LONG_TEXT =
    R"({"user":"admin","oldPwd":"admin123","newPwd":")" + std::string(70, 'n') + "\"}";
const std::string LONG_PATH =
    R"({"diskPath":")" + std::string(200, 'p') + R"(","url":")" + std::string(200, 'u') + "\"}";
const std::string CUT_PATH = R"(vrop.ecm set {"hcdnpath":")" + std::string(127, 'p') + R"(","cutusb":1})";

TEST(Control, ActsAndAnswers) {
    check({
        {"reboot"},
        {nullptr, "0: 200 {}", "vrop reboot {}", "reboot_call ..."},
        {"[", "0: 200 {}", "vrop reboot {}", "reboot fail", "", REFUSED},
        {"recovery"},
        {nullptr, "0: 200 {}", "vrop reset {}"},
        {"", "-1: 400 {}", "vrop reset {}", "recovery fail", "", REFUSED},
        {"{}", "-1: 400 {}", R"(vrop reset {"resetlevel":0})", "cutusb fail", "", REFUSED},
        {"updatePwd"},
        {R"({"user":"admin","oldPwd":"admin123","newPwd":"new"})", "0: 200 {}",
         R"(vrop.devinfo setaccount {"user":"admin","oldpasswd":"YWRtaW4xMjM=","newpasswd":"bmV3"})"},
        {LONG_TEXT.c_str(), "0: 200 {}",
         R"(vrop.devinfo setaccount {"user":"admin","oldpasswd":"YWRtaW4xMjM=","newpasswd":"bm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5u"})"},
        {R"({"user":"admin","oldPwd":"admin","newPwd":"new"})", "-1: 402 {}", nullptr, "set new passwd fail"},
        {R"({"user":"admin","oldPwd":"","newPwd":"new"})", "-1: 402 {}", "", "encode old passwd fail"},
        {R"({"user":"admin","oldPwd":"admin123","newPwd":""})", "-1: 402 {}", "", "encode new passwd fail"},
        {"cutUsb"},
        {nullptr, "0: 200 {}", R"(vrop.ecm set {"cutusb":1})", "cutUsb_call ..."},
        {R"({"diskPath":"/mnt/usb0"})", "0: 200 {}", R"(vrop.ecm set {"hcdnpath":"/mnt/usb0","cutusb":1})",
         "diskPath:/mnt/usb0"},
        {"", "-1: 400 {}", R"(vrop.ecm set {"cutusb":1})", "cutusb fail", "", REFUSED},
        {LONG_PATH.c_str(), "0: 200 {}", CUT_PATH.c_str()},
    });
}

TEST(Control, DropsThePageCacheOnceAllIsWritten) {
    ServiceRig rig;
    HelperStub sync("sync");
    sync.answer("1 0");
    EXPECT_EQ(rig.call("tuningMemory", nullptr), "-1: 400 tuningMemory {}");
    EXPECT_TRUE(has_logged("tuningMemory fail"));
    EXPECT_EQ(text_of("/proc/sys/vm/drop_caches"), "");
    EXPECT_EQ(rig.call("tuningMemory", "x"), "0: 200 tuningMemory {}");
    EXPECT_EQ(text_of("/proc/sys/vm/drop_caches"), "3\n");
}

TEST(RadioChecks, JudgeTheBandThatIsAskedFor) {
    const char *const on_a_bad_channel = R"({"vrop.webwifi1adv":{"currentchannel":11}})";
    const char *const no_score = R"({"vrop.wifi.1":{"channelscore":[{"channel":6},{"channel":6,"score":9}],)"
                                 R"("interference":{"interferencepercent":80}}})";
    const Fault flat = {.kind = Fault::Kind::Reply, .object = "vrop.wifi.2", .reply = R"({"noise":"-70"})"};
    check({
        {"checkSignal"},
        {R"({"wifiSignal":1})", R"(0: 200 {"signal": 1})", "", "wifiSignal:1",
         R"({"vrop.webwifi1adv":{"txpower":60}})"},
        {R"({"wifiSignal":2})", R"(0: 200 {"signal": 2})", "", R"(buf:{"signal": 2})",
         R"({"vrop.webwifi2adv":{"txpower":40}})"},
        {R"({"wifiSignal":2})", "-1:", "", "get 5g wifiSignal obj fail", "", SILENT},
        {"{}", "-1:", "", "get 2.4g wifiSignal obj fail", "", SILENT},
        {"checkInterference"},
        {R"({"wifiSignal":1})", R"(0: 200 {"interference":false})"},
        {"{}", R"(0: 200 {"interference":true})", "", "app send data error", on_a_bad_channel},
        {R"({"wifiSignal":1})", R"(0: 200 {"interference":false})", "", nullptr,
         R"({"vrop.wifi.1":{"interference":{"interferencepercent":95},"channelscore":[{"channel":6,"score":50}]}})"},
        {R"({"wifiSignal":1})", R"(0: 200 {"interference":true})", "", nullptr, no_score},
        {R"({"wifiSignal":3})", R"(0: 200 {"interference":true})", "", nullptr,
         R"({"vrop.wifi.1":{"interference":{"interferencepercent":80}}})"},
        {"wirelessInterference"},
        {R"({"radio":2})", R"(0: 200 {"noise": -97, "interference": 12})", "", "interference: 12 noise: -97"},
        {R"({"radio":2})", R"(0: 200 {"noise": -70, "interference": 0})", "", "noise: -70 interference: 0",
         "", flat},
        {R"({"radio":2})", "-1: 400 {}", "", "get 5G json obj fail", "", SILENT},
        {"{}", "-1: 400 {}", "", "get wirelessInterference fail", "", REFUSED},
    });
}

TEST(Throughput, IsToldInBytesPerSecond) {
    const Fault odd = {.kind = Fault::Kind::Reply,
                       .object = "vrop.waninfo",
                       .reply = R"({"vrop.waninfo.wanrate":{"rxrate_rt":"1e99","txrate_rt":"nan"}})"};
    const char *const two =
        R"({"vrop.laninfo":[{"mac":"02a0c9000001","active":1,"rxrate":"8","txrate":"0.5"},)"
        R"({"mac":"02a0c9000002","active":0},{"mac":"\"}","active":2},{"active":1},)"
        R"({"mac":"02:A0:C9:00:00:03","active":1}]})";
    check({
        {"monitorSpeed"},
        {"x", R"(0: 200 {"upSpeed": 65536, "downSpeed": 1048576})", "", "downspeed:1048576"},
        {nullptr, R"(0: 200 {"upSpeed": 0, "downSpeed": 0})", "", "get_dev_specInfo fail", "", SILENT},
        {nullptr, R"(0: 200 {"upSpeed": 0, "downSpeed": 2147483647})", "", "upseed:0", "", odd},
        {"apMonitorSpeed"},
        {R"({"mac":"02a0c9000001"})", R"(0: 200 {"upSpeed": 65536, "downSpeed": 1048576, "networkStatus":1})",
         "", "find corresponding mac", two},
        {R"({"mac":"02:A0:C9:00:00:"})", R"(0: 200 {"upSpeed": 0, "downSpeed": 0, "networkStatus":1})", "",
         nullptr, two},
        {R"({"mac":"02a0c9000002"})", "-1: 400 {}", "", "the device is offline", two},
        {R"({"mac":"02:A0:C9:00:00:03"})", "-1: 400 {}", "", nullptr, two},
        {"{}", "-1: 400 {}"},
        {"allApMonitorSpeed"},
        {nullptr,
         R"(0: 200 apMonitorSpeed {"monitorSpeeds": [)"
         R"({"mac": "02a0c9000001", "upSpeed": 65536, "downSpeed": 1048576, "networkStatus":1}, )"
         R"({"mac": "\"}", "upSpeed": 0, "downSpeed": 0, "networkStatus":1}, )"
         R"({"mac": "02:A0:C9:00:00:", "upSpeed": 0, "downSpeed": 0, "networkStatus":1}]})",
         "", "i:0 upseed:65536", two},
        {nullptr, "-1: 400 apMonitorSpeed {}", "", "allApMonitorSpeed_call ...", "", SILENT},
    });
}

// The router's time goes on with each pause, so that a test's curve is seen in its ten looks.
TEST(Throughput, OfADownloadIsTheBestThatWasSeenInItsTime) {
    ServiceRig rig;
    double passed = 0;
    moving_clock::on_pause([&](moving_clock::Millis millis) {
        lower_set_flag(); // as another service does at its end
        EXPECT_EQ(set_flag, 1);
        const int before = static_cast<int>(passed);
        passed += static_cast<double>(millis) / 1000;
        rig.router.elapse(static_cast<int>(passed) - before);
    });
    struct TestRow {
        const char *parameters, *test;
        double slept;
    };
    for (const TestRow &row :
         {TestRow{"{}", R"("time":8,"interval":1000})", 8},
          {R"({"url":"","time":20,"interval":5})", R"("time":20,"interval":5})", 20},
          {R"({"url":"http://h/f","time":-7})", R"({"url":"http://h/f","time":-7,"interval":1000})", 0},
          {R"({"time":4294967296})", R"("time":2147483647,"interval":1000})", 600}}) {
        const std::string answer = rig.call("maxMonitorSpeed", row.parameters);
        EXPECT_THAT(answer, testing::StartsWith(R"(0: 200 maxMonitorSpeed {"downSpeed":)")) << row.parameters;
        if (row.slept == 8) {
            EXPECT_THAT(answer, testing::EndsWith("11796480}"));
        }
        EXPECT_THAT(rig.writes().at(0), testing::EndsWith(row.test));
        EXPECT_EQ(ServiceRig::slept(), row.slept);
        EXPECT_EQ(set_flag, 0);
    }
}

TEST(SetFlag, StaysUpOnlyWhereACallEndsWithoutAnAnswer) {
    ServiceRig rig;
    struct FlagRow {
        const char *service, *parameters;
        bool readable;
        int flag;
    };
    for (const FlagRow &row : {FlagRow{"checkSignal", "{}", false, 1},
                               {"relayScan", R"({"radio":1})", true, 0},
                               {"checkSignal", "{}", false, 1},
                               {"checkSignal", "x", true, 1},
                               {"wirelessInterference", "{}", true, 1},
                               {"checkSignal", "{}", true, 0},
                               {"checkSignal", "x", true, 0},
                               {"maxMonitorSpeed", nullptr, true, 0},
                               {"maxMonitorSpeed", "x", true, 1},
                               {"checkInterference", "{}", false, 0},
                               {"maxMonitorSpeed", "x", true, 1},
                               {"maxMonitorSpeed", "[]", true, 0}}) {
        if (!row.readable) rig.router.add_fault(SILENT);
        rig.call(row.service, row.parameters);
        rig.router.clear_faults();
        EXPECT_EQ(set_flag, row.flag) << row.service << " " << (row.parameters ? row.parameters : "(null)");
    }
}

} // namespace
