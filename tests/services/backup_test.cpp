// SPDX-License-Identifier: Apache-2.0
// The services that move the configuration, as the SDK calls them.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include "services/backup_read.h"
#include "services/backup_services.h"
#include "services/config_export.h"
#include "services/service_rig.h"
#include "services/url_file.h"
#include "support/event_catcher.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

TEST(Backup, IsUploadedUnderANameOfItsOwnAndRemoved) {
    ServiceRig rig;
    script("post_file", "for f in /tmp/*_*_*.config; do echo \"$f\" >>/tmp/names; stat -c %a \"$f\" "
                        ">>/tmp/names; cp \"$f\" /tmp/sent; "
                        "done\nexit 1"); // whether the cloud has it is not asked
    for (const auto &[model, part] : {std::pair<std::string, std::string>{"AX3000", "AX3000"},
                                      {"../etc/x", "-.-etc-x"},
                                      {".hidden one;$(x)*", "-hidden-one---x--"},
                                      {"", ""},
                                      {std::string(200, 'm'), std::string(63, 'm')}}) {
        fs::remove("/tmp/names");
        rig.router.set_state("/vrop.ftinfo/model", "\"" + model + "\"");
        EXPECT_EQ(rig.call("tuningBackupCfg", nullptr), "0: 200 tuningBackupCfg {}");
        EXPECT_EQ(text_of("/tmp/names"), "/tmp/" + part + "_A1:B2:C3:D4:E5:F6_202405010800.config\n600\n");
        EXPECT_EQ(text_of("/tmp/sent"), rig.backup());
    }
    for (const fs::directory_entry &entry : fs::directory_iterator("/tmp"))
        EXPECT_NE(entry.path().extension(), ".config");
    EXPECT_TRUE(has_logged("tuningBackupCfg_call ..."));
}

TEST(Backup, HoldsALongConfigurationWholeOrFails) {
    const std::string ssid(32, 's'), key(63, 'k'), name(127, 'n');
    ServiceRig rig(
        R"({"vrop.waninfo":{"networktype":"PPPoE","protocoltype":"IPv4/IPv6","pppoename":")" + name +
        R"(","pppoepwd":")" + key +
        R"(","dns":"255.255.255.253, 255.255.255.254\t,255.255.255.255","ipaddr":"255.255.255.250","subnetmask":"255.255.255.252",)"
        R"("gateway":"255.255.255.251","ipv6type":"Static","ipv6addr":"2001:db8:1111:2222:3333:4444:5555:6666",)"
        R"("gateway6":"2001:db8:1111:2222:3333:4444:5555:7777","dns6type":"Static",)"
        R"("dns6":"2001:db8:1111:2222:3333:4444:5555:8888,2001:db8:1111:2222:3333:4444:5555:9999",)"
        R"("ipv6prefixOrigin":"Static","ipv6prefix6":"2001:db8:1111:2222:3333:4444:5555:aaaa","ipv6prefixlen6":64},)"
        R"("vrop.iptv":{"cfg_list":[{"Enable":1,"VlanID":4001,"Interface1":1,"Interface2":1,"Interface3":0},)"
        R"({"Enable":1,"VlanID":4002,"Interface1":0,"Interface2":0,"Interface3":1}]},)"
        R"("account":{"user":")" +
        name + R"("}})");
    rig.router.set_state(
        "/account/passwd",
        "\"cHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBw\"");
    for (const char *radio : {"/vrop.wifi.1.ap/0", "/vrop.wifi.2.ap/0"}) {
        rig.router.set_state(radio + std::string("/ssid"), "\"" + ssid + "\"");
        rig.router.set_state(radio + std::string("/key"), "\"" + key + "\"");
    }
    const std::string document = rig.backup();
    EXPECT_GT(document.size(), 1500u);
    EXPECT_THAT(document, HasSubstr(R"("Password":"pppp)"));
    EXPECT_THAT(document, HasSubstr(R"("DNS2":"255.255.255.254")"));
    EXPECT_EQ(rig.restore(document), 0);
    const int size = static_cast<int>(document.size());
    std::string room(document.size() + 1, '#');
    EXPECT_EQ(tunningBackupCfg_get(room.data(), size), -1);
    EXPECT_EQ(tunningBackupCfg_get(room.data(), size + 1), 0);

    script("post_file", "echo called >>/tmp/posted");
    rig.router.set_state("/vrop.webwifisimple/wifi24key", "\"" + std::string(2048, 'k') + "\"");
    rig.router.set_state("/vrop.waninfo/pppoename", "\"" + std::string(127, '\x01') + "\"");
    EXPECT_EQ(tunningBackupCfg_get(room.data(), 16), -1);
    EXPECT_STREQ(room.c_str(), "");
    EXPECT_EQ(rig.call("tuningBackupCfg", "{}"), "-1: 400 tuningBackupCfg {}");
    EXPECT_TRUE(has_logged("JsonObj To String fail"));
    EXPECT_FALSE(fs::exists("/tmp/posted"));
}

TEST(Backup, IsNotMadeOfHalfARouter) {
    ServiceRig rig;
    script("post_file", "echo called >>/tmp/posted");
    for (const auto &[object, line] :
         {std::pair<std::string, std::string>{"vrop.webwifisimple", "get wifi config fail"},
          {"vrop.waninfo", "get internet config fail"},
          {"vrop.devinfo", "get web passwd fail"},
          {"*", "get wifi config fail"}}) {
        rig.router.add_fault({.kind = router::Fault::Kind::Absent, .object = object});
        EXPECT_EQ(rig.call("tuningBackupCfg", "not JSON"), "-1: 400 tuningBackupCfg {}");
        EXPECT_TRUE(has_logged(line));
        rig.router.clear_faults();
    }
    fs::create_directory("/tmp/AX3000_A1:B2:C3:D4:E5:F6_202405010800.config"); // in the file's place
    EXPECT_EQ(rig.call("tuningBackupCfg", nullptr), "-1: 400 tuningBackupCfg {}");
    EXPECT_TRUE(has_logged("creat  file fail"));
    EXPECT_FALSE(fs::exists("/tmp/posted"));
    rig.router.clear_faults();
    rig.router.add_fault({.kind = router::Fault::Kind::Absent, .object = "vrop.[mi][ep]*"}); // mesh and IPTV
    for (const char *passwd : {"\"no base64!\"", "\"YQBi\""}) { // the latter has a zero in it
        rig.router.set_state("/account/passwd", passwd);
        EXPECT_THAT(rig.backup(), testing::EndsWith(R"("UserPwdCfg":{"Username":"admin"}})"));
    }
}

TEST(CfgReport, FetchesAnswersAndThenRestores) {
    const std::string longest = "http://host/" + std::string(243, 'a'),
                      longer = R"({"backupUrl":")" + longest + "b\"}";
    // takes the shell that runs it along, which may be itself
    const char *const killed = "[ \"$(cat /proc/$PPID/comm)\" != sh ] || kill -9 $PPID; kill -9 $$";
    const char *const request = R"({"backupUrl":"http://h/'$(reboot)`x`%s"})", *const url =
                                                                                   "http://h/'$(reboot)`x`%s";
    struct Case {
        const char *parameters, *helper, *answer; // what post_data does
        size_t events;
        std::string url;
        const char *logged;
    };
    const Case cases[] = {
        {nullptr, "exit 0", "-1:", 0, "", "param is NULL"},
        {"[7]", "exit 0", "-1: 400 cfgReport {}", 0, "", "param is no object"},
        {"{}", "exit 1", "-1: 400 cfgReport {}", 1, "", "download fail"},
        {request, killed, "-1: 400 cfgReport {}", 1, url, "ret:-1"},
        {request, "exit 0", "0: 200 cfgReport {}", 3, url, "ret:0"},
        {longer.c_str(), "exit 0", "0: 200 cfgReport {}", 3, longest, "cfgReport_call ..."},
    };
    ServiceRig rig;
    EventCatcher relay(128);
    for (const Case &row : cases) {
        SCOPED_TRACE(std::string(row.answer) + row.helper);
        fs::remove(URL_FILE);
        script("post_data", R"(echo "$*" >/tmp/mode; echo '{"MESHCfg":{"Enable":0}}' >/tmp/backup.config; )" +
                                std::string(row.helper));
        EXPECT_EQ(rig.call("cfgReport", row.parameters), row.answer);
        Texts events;
        for (size_t i = 0; i < row.events; i++)
            events.push_back(R"({"action": "cfgReportProgress", "progress": )" +
                             std::to_string(i == 0 ? 40 : 60 + 20 * i) + "}");
        EXPECT_EQ(relay.take(), events);
        EXPECT_EQ(text_of(URL_FILE), row.url);
        EXPECT_TRUE(has_logged(row.logged));
        if (row.events < 3) continue;
        EXPECT_EQ(text_of("/tmp/mode"), "2\n");
        EXPECT_TRUE(wait_for_log("pthread_exit") && has_logged("set mesh config ok"));
        std::vector<moving_clock::Millis> pauses = moving_clock::pauses(); // the restore's own among them
        std::erase(pauses, 5000);
        EXPECT_THAT(pauses, ElementsAre(2000, 2000, 1000));
    }
    fs::remove(URL_FILE);
    fs::create_directory(URL_FILE);
    for (const std::string service : {"cfgReport", "remoteCfgExport", "uploadLog"}) {
        EXPECT_EQ(rig.call(service, R"({"backupUrl":"u","uploadUrl":"u"})"),
                  "-1: 400 " + service + R"( {"urltxt":"failed"})");
        EXPECT_TRUE(has_logged("fopen file:/tmp/url.txt fail"));
    }
}

// Each applies the document that was fetched for it, though daemon and bus restart meanwhile.
TEST(CfgReport, TakesTurnsFromDownloadToTheRestoresEnd) {
    ServiceRig rig;
    script("post_data", R"(echo '{"WiFiCfg":{"wifi_cfg_24G":{"ESSID":"'$(cat /tmp/url.txt)'"}},)"
                        R"("MESHCfg":{"Enable":0},"InternetCfg":{"RouterMode":0}}' >/tmp/backup.config)");
    moving_clock::on_pause([&](moving_clock::Millis millis) {
        if (millis == 5000) rig.router.restart(true);
    });
    clear_main_log();
    rig.router.clear_calls();
    const auto call = [](const char *request) {
        EXPECT_EQ(cfgReport_call(1, 1, nullptr, nullptr, request), 0);
    };
    std::thread other(call, R"({"backupUrl":"First"})");
    call(R"({"backupUrl":"Second"})");
    other.join();
    const Texts one = {"cmd:/usr/bin/post_data 2", "set wifi config ok", "set mesh config ok",
                       "set internet config ok", "pthread_exit"};
    script("post_data", "exit 1"); // waits for both
    EXPECT_EQ(cfgReport_call(1, 1, nullptr, nullptr, "{}"), -1);
    moving_clock::on_pause({});
    Texts said = log_messages(), twice = one;
    std::erase_if(said, [&](const auto &line) { return std::count(one.begin(), one.end(), line) == 0; });
    twice.insert(twice.end(), one.begin(), one.end());
    twice.push_back(one[0]);
    EXPECT_EQ(said, twice);
    EXPECT_THAT(rig.router.calls("vrop.webwifisimple", "set").size(), 2u);
    EXPECT_THAT(rig.writes(), testing::IsSupersetOf({R"(vrop.webwifisimple set {"wifi24ssid":"First"})",
                                                     R"(vrop.webwifisimple set {"wifi24ssid":"Second"})"}));
}

TEST(RemoteCfgExport, ExportsBeforeItLooksAtItsRequest) {
    const std::string long_url = "http://h/" + std::string(502, 'u'),
                      upload = R"({"uploadUrl":"http://up/'\";","url":")",
                      request = upload + long_url + "t\"}", odd = upload + R"(q\"\\\n\u0001%s"})",
                      ok = R"(0: 200 remoteCfgExport {"url": ")";
    struct Case {
        std::string parameters;
        int status;
        std::string answer;
        const char *logged;
    };
    const Case cases[] = {
        {"[]", 0, "-1: 400 remoteCfgExport {}", "param is no object"},
        {R"({"url":"x"})", 0, R"(-1: 400 remoteCfgExport {"url content":"empty"})", "url is invalid"},
        {R"({"uploadUrl":""})", 0, R"(-1: 400 remoteCfgExport {"url":"failed"})", "url content is empty"},
        {request, 3, R"(-1: 400 remoteCfgExport {"upload":"failed"})", "put file failed"},
        {request, 0, ok + long_url + "\"}", "flag: 1"},
        {odd, 0, ok + R"(q\"\\\n\u0001%s"})", "flag: 1"},
        {R"({"uploadUrl":"http://up/'\";"})", 0, ok + "\"}", "flag: 1"},
    };
    ServiceRig rig;
    for (const Case &row : cases) {
        SCOPED_TRACE(row.answer);
        fs::remove("/tmp/put");
        script("common_put_file",
               "{ cat /tmp/url.txt; echo \" $*\"; } >/tmp/put; exit " + std::to_string(row.status));
        EXPECT_EQ(rig.call("remoteCfgExport", row.parameters.c_str()), row.answer);
        EXPECT_THAT(rig.writes(), ElementsAre("vrop configexport {}"));
        EXPECT_TRUE(has_logged(row.logged));
        const bool sent = row.status != 0 || row.answer.starts_with("0");
        EXPECT_EQ(text_of("/tmp/put"), sent ? "http://up/'\"; /aptmp/cfg_export_config_file.conf\n" : "");
    }
    rig.router.add_fault(
        {.kind = router::Fault::Kind::Reply, .object = "vrop", .reply = R"({"result":"0"})"});
    fs::remove("/aptmp/cfg_export_config_file.conf"); // this daemon writes it elsewhere
    EXPECT_THAT(rig.call("remoteCfgExport", request.c_str()), testing::StartsWith(ok));
    EXPECT_THAT(text_of("/tmp/put"), HasSubstr(" /tmp/cfg_export_config_file.conf\n"));
    EXPECT_TRUE(has_logged("flag: 0"));
    rig.router.clear_faults();
    rig.router.add_fault({.kind = router::Fault::Kind::Result, .object = "vrop", .value = 1});
    for (const char *parameters : {request.c_str(), static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(rig.call("remoteCfgExport", parameters), "-1: 400 remoteCfgExport {}");
        EXPECT_TRUE(has_logged("remoteCfgExport fail"));
    }
}

TEST(UrlFile, StaysAsItIsWhileItsHelperWorks) {
    ServiceRig rig;
    const std::string watch =
        "first=$(cat /tmp/url.txt)\necho \"$first\" >>/tmp/seen_$$\ni=0\nwhile [ $i -lt 40 ]; do\n"
        "[ \"$(cat /tmp/url.txt)\" = \"$first\" ] || echo changed >>/tmp/seen_$$\ni=$((i+1))\ndone\n"
        "cat /tmp/seen_$$ >>/tmp/seen";
    script("common_put_file", watch);
    script("post_data", watch + "\nexit 1");
    std::thread other([] { EXPECT_EQ(cfgReport_call(1, 1, nullptr, nullptr, R"({"backupUrl":"b"})"), -1); });
    for (const char *request : {R"({"uploadUrl":"one","url":"u"})", R"({"uploadUrl":"two","url":"u"})"})
        EXPECT_EQ(remoteCfgExport_call(2, 2, nullptr, nullptr, request), 0);
    other.join();
    EXPECT_EQ(text_of("/tmp/seen").size(), std::string("b\none\ntwo\n").size()) << text_of("/tmp/seen");
}

} // namespace
