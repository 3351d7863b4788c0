// SPDX-License-Identifier: Apache-2.0
// The services that move the configuration, as the SDK calls them.
#include <algorithm>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>

#include "services/backup_rig.h"
#include "services/backup_services.h"
#include "services/url_file.h"
#include "support/event_catcher.h"
#include "support/moving_clock.h"
#include "support/recording_sdk.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using Texts = std::vector<std::string>;
using Handler = int (*)(uint32_t, uint32_t, void *, void *, const char *);
namespace fs = std::filesystem;

// Puts a shell script into /usr/bin.
void script(const std::string &program, const std::string &lines) {
    const std::string path = "/usr/bin/" + program;
    fs::remove(path);
    std::ofstream(path) << "#!/bin/sh\n" << lines << "\n";
    fs::permissions(path, fs::perms::all);
}

// What the handler returns and answers: "-1" or "0 200 {}".
std::string answer_of(Handler handler, const char *parameters) {
    recording_sdk::clear_calls();
    clear_main_log();
    std::string text = std::to_string(handler(7, 8, nullptr, nullptr, parameters));
    for (const recording_sdk::Call &call : recording_sdk::calls_of("TEBRA_SDK_Handle_Response"))
        text += " " + call.arguments[2] + " " + call.arguments[3];
    return text;
}

void expect_logged(const Texts &lines) {
    for (const std::string &line : lines)
        EXPECT_TRUE(has_logged(line)) << line;
}

TEST(Backup, IsUploadedUnderANameOfItsOwnAndRemoved) {
    BackupRig rig;
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
        EXPECT_EQ(answer_of(tuningBackupCfg_call, nullptr), "0 200 {}");
        EXPECT_EQ(text_of("/tmp/names"), "/tmp/" + part + "_A1:B2:C3:D4:E5:F6_202405010800.config\n600\n");
        EXPECT_EQ(text_of("/tmp/sent"), rig.backup());
    }
    for (const fs::directory_entry &entry : fs::directory_iterator("/tmp"))
        EXPECT_NE(entry.path().extension(), ".config");
    expect_logged({"tuningBackupCfg_call ...", ""});
}

TEST(Backup, HoldsALongConfigurationWholeOrFails) {
    const std::string ssid(32, 's'), key(63, 'k'), name(127, 'n');
    BackupRig rig(
        R"({"vrop.waninfo":{"networktype":"PPPoE","protocoltype":"IPv4/IPv6","pppoename":")" + name +
        R"(","pppoepwd":")" + key +
        R"(","dns":"255.255.255.253,255.255.255.254,255.255.255.255","ipaddr":"255.255.255.250","subnetmask":"255.255.255.252",)"
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
    EXPECT_EQ(rig.restore(document), 0);

    script("post_file", "echo called >>/tmp/posted");
    rig.router.set_state("/vrop.webwifisimple/wifi24key", "\"" + std::string(2048, 'k') + "\"");
    rig.router.set_state("/vrop.waninfo/pppoename", "\"" + std::string(127, '\x01') + "\"");
    char small[16] = "before";
    EXPECT_EQ(tunningBackupCfg_get(small, sizeof small), -1);
    EXPECT_STREQ(small, "");
    EXPECT_EQ(answer_of(tuningBackupCfg_call, "{}"), "-1 400 {}");
    expect_logged({"JsonObj To String fail"});
    EXPECT_FALSE(fs::exists("/tmp/posted"));
}

TEST(Backup, IsNotMadeOfHalfARouter) {
    BackupRig rig;
    script("post_file", "echo called >>/tmp/posted");
    for (const auto &[object, line] :
         {std::pair<std::string, std::string>{"vrop.webwifisimple", "get wifi config fail"},
          {"vrop.webwifi2adv", "get wifi config fail"},
          {"vrop.waninfo", "get internet config fail"},
          {"vrop.devinfo", "get web passwd fail"},
          {"*", "get wifi config fail"}}) {
        rig.router.add_fault({.kind = router::Fault::Kind::Absent, .object = object});
        EXPECT_EQ(answer_of(tuningBackupCfg_call, "not JSON"), "-1 400 {}");
        expect_logged({line});
        rig.router.clear_faults();
    }
    fs::create_directory("/tmp/AX3000_A1:B2:C3:D4:E5:F6_202405010800.config"); // in the file's place
    EXPECT_EQ(answer_of(tuningBackupCfg_call, nullptr), "-1 400 {}");
    expect_logged({"creat  file fail"});
    rig.router.add_fault(
        {.kind = router::Fault::Kind::Status, .object = "vrop.devinfo", .method = "get", .value = 6});
    EXPECT_EQ(answer_of(tuningBackupCfg_call, nullptr), "-1 400 {}");
    expect_logged({"set file name fail", "creat  file fail"});
    EXPECT_FALSE(fs::exists("/tmp/posted"));
    rig.router.clear_faults();
    rig.router.add_fault({.kind = router::Fault::Kind::Absent, .object = "vrop.[mi][ep]*"}); // mesh and IPTV
    rig.router.set_state("/account/passwd", "\"no base64!\"");
    EXPECT_THAT(rig.backup(), testing::EndsWith(R"("UserPwdCfg":{"Username":"admin"}})"));
}

TEST(CfgReport, FetchesAnswersAndThenRestores) {
    const std::string long_url = "http://host/" + std::string(300, 'a');
    // takes the shell that runs it along, which may be itself
    const std::string KILLED = "[ \"$(cat /proc/$PPID/comm)\" != sh ] || kill -9 $PPID; kill -9 $$";
    struct Case {
        const char *parameters;
        std::string helper; // what post_data does
        std::string answer;
        size_t events;
        std::string url;
        Texts lines;
    };
    const std::string request = R"({"backupUrl":"http://h/'$(reboot)`x`%s"})",
                      url = "http://h/'$(reboot)`x`%s";
    const std::string long_request = R"({"backupUrl":")" + long_url + "\"}";
    const Case cases[] = {
        {nullptr, "exit 0", "-1", 0, "", {"param is NULL"}},
        {"", "exit 0", "-1", 0, "", {"param is NULL"}},
        {"{", "exit 0", "-1", 0, "", {"JsonStr Token fail"}},
        {"{}", "exit 1", "-1 400 {}", 1, "", {"ret:1", "download fail"}},
        {"[7]", "exit 1", "-1 400 {}", 0, "", {"param is no object"}},
        {R"({"backupUrl":{}})", "exit 2", "-1 400 {}", 1, "", {"ret:2"}},
        {request.c_str(), KILLED, "-1 400 {}", 1, url, {"ret:-1", "download fail"}},
        {request.c_str(), "exit 0", "0 200 {}", 3, url, {"ret:0"}},
        {long_request.c_str(), "exit 0", "0 200 {}", 3, long_url.substr(0, 255), {}},
    };
    BackupRig rig;
    EventCatcher relay(128);
    auto event = [](int percent) {
        return R"({"action": "cfgReportProgress", "progress": )" + std::to_string(percent) + "}";
    };
    const Texts events = {event(40), event(80), event(100)};
    for (const Case &row : cases) {
        SCOPED_TRACE(row.answer + row.helper);
        fs::remove(URL_FILE);
        moving_clock::clear_pauses();
        script("post_data",
               "echo \"$*\" >/tmp/mode; echo '{\"MESHCfg\":{\"Enable\":0}}' >/tmp/backup.config\n" +
                   row.helper);
        EXPECT_EQ(answer_of(cfgReport_call, row.parameters), row.answer);
        EXPECT_EQ(relay.take(), Texts(events.begin(), events.begin() + static_cast<long>(row.events)));
        EXPECT_EQ(text_of(URL_FILE), row.url);
        expect_logged(row.lines);
        if (row.events < 3) continue;
        EXPECT_EQ(text_of("/tmp/mode"), "2\n");
        EXPECT_TRUE(wait_for_log("pthread_exit"));
        expect_logged({"cfgReport_call ...", "set mesh config ok"});
        std::vector<moving_clock::Millis> pauses = moving_clock::pauses(); // the restore's own among them
        std::erase(pauses, 5000);
        EXPECT_THAT(pauses, ElementsAre(2000, 2000, 1000));
    }
    fs::remove(URL_FILE);
    fs::create_directory(URL_FILE);
    EXPECT_EQ(answer_of(cfgReport_call, request.c_str()), R"(-1 400 {"urltxt":"failed"})");
    expect_logged({"fopen file:/tmp/url.txt fail"});
}

// Each applies the document that was fetched for it, though daemon and bus restart meanwhile.
TEST(CfgReport, TakesTurnsFromDownloadToTheRestoresEnd) {
    BackupRig rig;
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
    EXPECT_THAT(rig.writes(), testing::IsSupersetOf({R"(webwifisimple {"wifi24ssid":"First"})",
                                                     R"(webwifisimple {"wifi24ssid":"Second"})"}));
}

TEST(RemoteCfgExport, ExportsBeforeItLooksAtItsRequest) {
    const std::string long_url = "http://h/" + std::string(502, 'u');
    const std::string request = R"({"uploadUrl":"http://up/'\";","url":")" + long_url + "\"}";
    const std::string longer =
        R"({"uploadUrl":"http://up/'\";","url":")" + long_url.substr(1) + "\u00e9tail\"}";
    const std::string odd = R"({"uploadUrl":"http://up/'\";","url":"q\"\\\n\u0001%s"})";
    struct Case {
        const char *parameters;
        int status;
        std::string answer;
        Texts lines;
    };
    const Case cases[] = {
        {nullptr, 0, "-1", {"param is NULL"}},
        {"no", 0, "-1", {"JsonStr Token fail"}},
        {"[]", 0, "-1 400 {}", {"param is no object"}},
        {R"({"uploadUrl":null,"url":"x"})", 0, R"(-1 400 {"url content":"empty"})", {"url is invalid"}},
        {R"({"uploadUrl":"","url":"x"})", 0, R"(-1 400 {"url":"failed"})", {"url content is empty"}},
        {request.c_str(), 3, R"(-1 400 {"upload":"failed"})", {"put file failed", "url is http://up/'\";"}},
        {request.c_str(), 0, R"(0 200 {"url": ")" + long_url + "\"}", {"flag: 1"}},
        {longer.c_str(), 0, R"(0 200 {"url": ")" + long_url.substr(1) + "\"}", {}},
        {odd.c_str(), 0, R"(0 200 {"url": "q\"\\\n\u0001%s"})", {}},
        {R"({"uploadUrl":"http://up/'\";"})", 0, R"(0 200 {"url": ""})", {}},
    };
    BackupRig rig;
    for (const Case &row : cases) {
        SCOPED_TRACE(row.answer);
        rig.router.clear_calls();
        fs::remove("/tmp/put");
        script("common_put_file",
               "{ cat /tmp/url.txt; echo \" $*\"; } >/tmp/put; exit " + std::to_string(row.status));
        EXPECT_EQ(answer_of(remoteCfgExport_call, row.parameters), row.answer);
        EXPECT_EQ(rig.router.calls("vrop", "configexport").size(), 1u);
        expect_logged(row.lines);
        EXPECT_EQ(text_of("/tmp/put"), row.answer.find("200") != row.answer.npos || row.status != 0
                                           ? "http://up/'\"; /aptmp/cfg_export_config_file.conf\n"
                                           : "");
    }
    rig.router.add_fault(
        {.kind = router::Fault::Kind::Reply, .object = "vrop", .reply = R"({"result":"0"})"});
    fs::remove("/aptmp/cfg_export_config_file.conf"); // this daemon writes it elsewhere
    EXPECT_THAT(answer_of(remoteCfgExport_call, request.c_str()), HasSubstr("0 200 "));
    EXPECT_THAT(text_of("/tmp/put"), HasSubstr(" /tmp/cfg_export_config_file.conf\n"));
    expect_logged({"flag: 0"});
    rig.router.clear_faults();
    rig.router.add_fault({.kind = router::Fault::Kind::Result, .object = "vrop", .value = 1});
    for (const char *parameters : {request.c_str(), static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(answer_of(remoteCfgExport_call, parameters), "-1 400 {}");
        expect_logged({"remoteCfgExport fail"});
    }
}

TEST(UrlFile, StaysAsItIsWhileItsHelperWorks) {
    BackupRig rig;
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
    std::istringstream seen(text_of("/tmp/seen"));
    Texts lines;
    for (std::string line; std::getline(seen, line);)
        lines.push_back(line);
    EXPECT_THAT(lines, testing::UnorderedElementsAre("b", "one", "two"));
}

} // namespace
