// SPDX-License-Identifier: Apache-2.0
// Backup documents and what a restore makes of them.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/stat.h>

#include "services/restore.h"
#include "services/service_rig.h"

namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

// A router that differs from the home of home.json in everything that a backup could hold.
const std::string OTHER = R"JSON({
    "account": {"passwd": "cGFzcyAiMSI="},
    "vrop.mesh": {"enable": 1, "role": 2},
    "vrop.iptv": {"cfg_list": [{"Enable": 1, "VlanID": 85, "Interface1": 1, "Interface2": 0, "Interface3": 0},
                               {"Enable": 0, "VlanID": 45, "Interface1": 0, "Interface2": 1, "Interface3": 1}]},
    "vrop.webwifisimple": {"wifidual": 1, "use2_4gpwd": 1, "wifi5backup": 1, "wifi5backup24ssid": "Spare"},
    "vrop.wifi.1.ap": [{"index": 0, "enable": 0, "ssid": "Caf\u00e9 \"1\"", "key": "a'b\\c;$(x)",
                        "encrypt": "TKIP/AES", "authmode": "WPA-PSK", "hide": 1}],
    "vrop.wifi.2.ap": [{"index": 0, "enable": 0, "ssid": "Five", "key": "other-five", "encrypt": "NONE",
                        "authmode": "NONE", "hide": 1}],
    "vrop.webwifi1adv": {"txpower": 20, "bandwidth": 40, "mode": "11bg", "channel": 11},
    "vrop.webwifi2adv": {"txpower": 30, "bandwidth": 160, "mode": "11ac", "channel": 149},
    "vrop.waninfo": )JSON";

// Places in the state: a word with a slash names an object, the others its members.
const std::string SAME =
    "/vrop.iptv cfg_list /account passwd /vrop.webwifisimple wifidual wifi5backup "
    "/vrop.wifi.1.ap/0 enable ssid key authmode encrypt /vrop.webwifi1adv bandwidth channel "
    "/vrop.wifi.2.ap/0 enable ssid key authmode encrypt /vrop.webwifi2adv bandwidth channel "
    "/vrop.waninfo ";
// What a restore has no words for.
const std::string KEPT = "/vrop.mesh enable role /vrop.webwifisimple use2_4gpwd wifi5backup24ssid "
                         "/vrop.webwifi1adv txpower mode hide /vrop.webwifi2adv txpower mode hide "
                         "/vrop.waninfo protocoltype";

struct Way {
    std::string wan;   // the other router's, beside OTHER
    std::string relay; // more of its state
    std::string same;  // what comes back of it, beside SAME
};
const std::string V4 =
    R"("ipaddr":"192.0.2.9","subnetmask":"255.255.0.0","gateway":"192.0.2.1","dnsenable":1,)"
    R"("dns":"192.0.2.53,192.0.2.54,192.0.2.55",)";
const std::string V6 =
    R"("ipv6type":"Static","ipv6addr":"2001:db8::9","gateway6":"2001:db8::1","dns6type":"Static",)"
    R"("dns6":"2001:db8::53,2001:db8::54","ipv6prefixOrigin":"Static","ipv6prefix6":"2001:db8:1::",)"
    R"("ipv6prefixlen6":48,)";
const Way WAYS[] = {
    {R"({"workmode":"BRIDGE","networktype":"BRIDGE","protocoltype":"IPv6"})", "", "workmode networktype"},
    {R"({"workmode":"ROUTE","networktype":"DHCP","protocoltype":"IPv4",)" + V4 + R"("status":"Connected"})",
     "", "workmode networktype dnsenable dns"},
    {R"({"protocoltype":"IPv4/IPv6","dns6type":"Static",)" + V4 + R"("networktype":"DHCP"})", "",
     "networktype dnsenable dns dns6type"},
    {R"({"protocoltype":"IPv6",)" + V6 + R"("networktype":"DHCP"})", "",
     "ipv6type ipv6addr gateway6 dns6type dns6 ipv6prefixOrigin ipv6prefix6"},
    {R"({"protocoltype":"IPv4/IPv6",)" + V4 + V6 + R"("networktype":"STATIC"})", "",
     "networktype ipaddr subnetmask gateway dnsenable dns ipv6type ipv6addr gateway6 dns6type dns6 "
     "ipv6prefixOrigin ipv6prefix6 ipv6prefixlen6"},
    {R"({"protocoltype":"IPv4","pppoename":"me\"@isp","pppoepwd":"p'w","pppoemtu":1480,"pppoestaticdns":1,)" +
         V4 + R"("networktype":"PPPoE"})",
     "", "networktype pppoename pppoepwd pppoemtu pppoestaticdns dnsenable dns"},
    {R"({"protocoltype":"IPv4","workmode":"APCLIENT","radio":"2.4G"})",
     R"("vrop.wifi.1.apclient":{"enable":1,"ssid":"Up","key":"upstairs1","authmode":"WPA3-SAE"})",
     "workmode radio /vrop.wifi.1.apclient enable ssid key authmode"},
};

Texts values(const router::Router &router, const std::string &places) {
    Texts found;
    std::string object;
    std::istringstream words(places);
    for (std::string word; words >> word;)
        if (word[0] == '/')
            object = word + "/";
        else
            found.push_back(object + word + " " + router.value(object + word));
    return found;
}

TEST(Restore, GivesAnotherRouterWhatTheDocumentCanHold) {
    for (const Way &way : WAYS) {
        SCOPED_TRACE(way.wan + way.relay);
        std::string document;
        Texts wanted;
        {
            ServiceRig other(OTHER + way.wan + (way.relay.empty() ? "" : "," + way.relay) + "}");
            document = other.backup();
            wanted = values(other.router, SAME + way.same);
        }
        ServiceRig home;
        const Texts kept = values(home.router, KEPT);
        EXPECT_EQ(home.restore(document), 0) << document;
        EXPECT_EQ(values(home.router, SAME + way.same), wanted) << document;
        EXPECT_EQ(values(home.router, KEPT), kept);
        EXPECT_THAT(log_messages(), testing::Each(testing::Not(testing::HasSubstr("fail"))));
    }
}

// A document, what is written of it ("OBJECT {...} | OBJECT {...}"), a line of the log, the result.
struct Case {
    std::string document;
    std::string writes;
    const char *logged;
    int result = 0;
};

std::string internet(const std::string &members) {
    return R"({"InternetCfg":{)" + members + "}}";
}

TEST(Restore, WritesWhatIsGivenAndNothingElse) {
    const std::string dhcp = R"("RouterMode":1,"SubMode":0,)", fixed = R"("RouterMode":1,"SubMode":1,)";
    const Case cases[] = {
        {"{}", "", "set wifi config ok"},
        {R"({"WiFiCfg":[],"InternetCfg":7,"MESHCfg":null,"IPTVCfg":"","UserPwdCfg":{"Username":"admin"}})",
         "", "set web passwd fail"},
        {R"({"WiFiCfg":{"wifi_cfg_24G":{"Enable":0,"ESSID":"","KeyPassphrase":null,"BeaconType":6,"Encryption":"AES"},"wifi_cfg_5G":{"ESSID":["x"],"BeaconType":-2}}})",
         "", "tmp.wifi_cfg.wifi5gBackup_info.enable:-1"},
        {R"({"WiFiCfg":{"wifi_cfg_24G":{"RadioStatus":2,"Enable":0},"wifi_cfg_5G":{"Channel":44}}})",
         R"(webwifi2adv {"channel":44})", "tmp.wifi_cfg.wifi2gBackup_info.enable:-1"},
        {R"({"WiFiCfg":{"wifi_cfg_24G":{"RadioStatus":1,"Enable":0},"wifi_cfg_5G":{"ESSID":"Only"},"wifi5_cfg_24G":{"Enable":1}}})",
         R"(webwifisimple {"wifi24apenable":0,"wifi5ssid":"Only","wifi5backup":1})",
         "tmp.wifi_cfg.wifi2gBackup_info.enable:1"},
        {R"({"WiFiCfg":{"SameSSIDStatus":1,"wifi_cfg_24G":{"RadioStatus":1,"Enable":1,"ESSID":"A","KeyPassphrase":"12345678",)"
         R"("BeaconType":5,"Encryption":3,"Channel":6,"BandWidth":40},"wifi_cfg_5G":{"Enable":true,"ESSID":"B",)"
         R"("KeyPassphrase":"87654321","BeaconType":"1","Encryption":0},"wifi5_cfg_5G":{"Enable":0},"wifi5_cfg_24G":{"Enable":1}}})",
         R"(webwifisimple {"wifidual":1,"wifi24apenable":1,"wifi24ssid":"A","wifi24key":"12345678","wifi5apenable":1,)"
         R"("wifi5ssid":"B","wifi5key":"87654321","wifi5backup":0} | webwifi1adv {"bandwidth":40,"channel":6,"encrypt":"TKIP/AES","authmode":"WPA2-PSK/WPA3-SAE"} | webwifi2adv {"encrypt":"NONE","authmode":"WPA-PSK"})",
         "set wifi config ok"},
        {R"({"IPTVCfg":{"cfg_list":[{"VlanID":85,"Interface1":1},{"Enable":1,"VlanID":9999,"Interface1":0,"Interface2":1,"Interface3":1}]}})",
         R"(iptv {"vlanid":85} | iptv {"enable":1,"vlanid":9999,"ethport":"011"})",
         "set iptv vlanId:9999  ethport:011 buf:fail"},
        {R"({"MESHCfg":{"Enable":1,"DeviceRole":2}})", R"(mesh {"enable":1,"role":2})", "set mesh config ok"},
        {R"({"MESHCfg":{"Enable":1,"DeviceRole":9}})", R"(mesh {"enable":1,"role":9})", "start mesh fail"},
        {R"({"UserPwdCfg":{"Username":"root","Password":"x"}})",
         R"(devinfo {"user":"root","oldpasswd":"YWRtaW4xMjM=","newpasswd":"eA=="})", "change passwd fail"},
        {internet(R"("RouterMode":3)"), "", "route mode:3 is not right", -1},
        {internet(R"("RouterMode":1,"SubMode":3)"), "", "subMode:3 is not right", -1},
        {internet(R"("RouterMode":1,"SubMode":0)"), "", "ipMode:-1", -1},
        {internet(dhcp + R"("IPMode":2,"DNSEnable":true,"DNSv6Src":1,"DNSv6":"2001:db8::1")"),
         R"(waninfo {"networktype":"DHCP","dns6type":"Static","dns":"2001:db8::1"})", "ipMode:2"},
        {internet(fixed + R"("IPMode":1,"IpAddress":"not one")"),
         R"(waninfo {"networktype":"STATIC","ipaddr":"not one"})", "set ipv4 static way fail", -1},
        {internet(
             fixed +
             R"("IPMode":2,"Gua1":"2001:db8::2","Gateway6":"2001:db8::1","PrefixSrc":1,"Prefix1":"2001:db8:7::","Prefix1Len":60,)"
             R"("PrefixDelegation":"2001:db8:8::","IpAddress":"192.0.2.1")"),
         R"(waninfo {"ipv6type":"Static","ipv6addr":"2001:db8::2","gateway6":"2001:db8::1","ipv6prefixOrigin":"PrefixDelegation","ipv6prefix6":"2001:db8:8::"})",
         "set internet config ok"},
        {internet(fixed + R"("IPMode":3,"PrefixSrc":1,"Prefix1":"2001:db8:7::","Prefix1Len":60)"),
         R"(waninfo {"networktype":"STATIC","ipv6type":"Static","ipv6prefixOrigin":"PrefixDelegation"})",
         "set ipv6 static way fail", -1},
        {internet(fixed + R"("IPMode":3,"PrefixSrc":2,"Prefix1Len":60)"),
         R"(waninfo {"networktype":"STATIC","ipv6type":"Static","ipv6prefixOrigin":"Static","ipv6prefixlen6":60})",
         "set backup config fail", -1},
        {internet(R"("RouterMode":1,"SubMode":2,"MTU":1,"PPPoEUsername":"u","DNSEnable":false)"),
         R"(waninfo {"networktype":"PPPoE","pppoename":"u","pppoemtu":1,"pppoestaticdns":0,"dnsenable":0})",
         "set ppoe way fail", -1},
        {internet(R"("RouterMode":2,"RadioType":2,"ESSID":"Up")"), "", "set internet config fail", -1},
        {internet(R"("RouterMode":2,"RadioType":1,"ESSID":"Up","PassWord":"12345678","authmode":77)"),
         R"(wifi.2.apclient {"enable":1,"ssid":"Up","key":"12345678"})", "set internet config ok"},
        {internet(R"("RouterMode":2,"RadioType":0)"), R"(wifi.1.apclient {"enable":1})", "set relay way fail",
         -1},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.document);
        ServiceRig rig;
        EXPECT_EQ(rig.restore(row.document), row.result);
        std::string writes;
        for (const router::Call &call : rig.router.calls("*", "set*"))
            writes += (writes.empty() ? "" : " | ") + call.object.substr(5) + " " + call.arguments;
        EXPECT_EQ(writes, row.writes);
        EXPECT_TRUE(has_logged(row.logged)) << main_log();
        EXPECT_EQ(has_logged("set backup config fail"), row.result != 0);
    }
    EXPECT_EQ(backup_relay_radio, 0);
}

TEST(Restore, GoesOnAfterAStepThatFailsAndKeepsItsPauses) {
    const std::string document =
        R"({"WiFiCfg":{"wifi_cfg_24G":{"ESSID":"A","BeaconType":0},"wifi_cfg_5G":{"Channel":36}},"IPTVCfg":{"cfg_list":[{"VlanID":5}]},)"
        R"("MESHCfg":{"Enable":1},"UserPwdCfg":{"Password":"secret"},"InternetCfg":{"RouterMode":0}})";
    const struct {
        std::string object;             // that refuses
        const char *logged;             // of it
        std::vector<const char *> fail; // steps
    } cases[] = {
        {"none", "set backup config fail", {}},
        {"vrop.webwifisimple", "set wifi fail", {"wifi"}},
        {"vrop.webwifi1adv", "set 2.4G senior config fail", {"wifi"}},
        {"vrop.webwifi?adv", "set 5G senior config fail", {"wifi"}},
        {"vrop.iptv", "set iptv vlanId:5  ethport: buf:fail", {"iptv"}},
        {"vrop.mesh", "start mesh fail", {"mesh"}},
        {"vrop.devinfo", "get ftinfo obj fail", {"web"}},
        {"vrop.waninfo", "set bridge way fail", {"internet"}},
        {"*", "set bridge way fail", {"wifi", "iptv", "mesh", "web", "internet"}},
    };
    ServiceRig rig;
    for (const auto &row : cases) {
        SCOPED_TRACE(row.object);
        rig.router.clear_faults();
        rig.router.add_fault({.kind = router::Fault::Kind::Status, .object = row.object, .value = 6});
        const bool internet_fails = !row.fail.empty() && row.fail.back() == std::string("internet");
        EXPECT_EQ(rig.restore(document), internet_fails ? -1 : 0);
        EXPECT_THAT(moving_clock::pauses(), ElementsAre(5000, 5000));
        EXPECT_EQ(has_logged(row.logged), row.object != "none");
        const Texts said = log_messages();
        auto at = said.begin();
        for (const std::string step : {"wifi", "iptv", "mesh", "web", "internet"}) { // in order
            const bool fails = std::find(row.fail.begin(), row.fail.end(), step) != row.fail.end();
            at = std::find(at, said.end(),
                           "set " + step + (step == "web" ? " passwd " : " config ") +
                               (fails ? "fail" : "ok"));
            EXPECT_NE(at, said.end()) << step;
        }
        // a network's security belongs to a name that was not taken
        EXPECT_EQ(rig.router.calls("vrop.webwifi?adv", "set").empty(),
                  row.object == "vrop.webwifisimple" || row.object == "*");
    }
}

TEST(Restore, ReadsOneWholeDocumentOrNothing) {
    ServiceRig rig;
    const std::string filler(2048, ' ');
    for (const auto &[text, line] :
         {std::pair<std::string, std::string>{"", "file have not data"},
          {"{", "cJSON Parse fail"},
          {"[]", "cJSON Parse fail"},
          {"null", "cJSON Parse fail"},
          {std::string(5000, '['), "cJSON Parse fail"},
          {R"({"InternetCfg":)" + filler + R"({"RouterMode":0}})", "cJSON Parse fail"}}) {
        EXPECT_EQ(rig.restore(text), -1);
        EXPECT_THAT(log_messages(),
                    ElementsAre("------------->start enter tunningBackupCfg set<--------------", line));
        EXPECT_TRUE(rig.router.calls().empty());
    }
    EXPECT_EQ(rig.restore(R"({"InternetCfg":{"RouterMode":0}})" + filler), 0);
    fs::remove(BACKUP_FILE);
    for (bool fifo : {false, true}) {
        EXPECT_EQ(fifo ? mkfifo(BACKUP_FILE, 0600) : 0, 0);
        clear_main_log();
        EXPECT_EQ(tunningBackupCfg_set(), -1);
        EXPECT_TRUE(has_logged("open file fail"));
    }
}

} // namespace
