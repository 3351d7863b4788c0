// SPDX-License-Identifier: Apache-2.0
// Sets: what they change, wherever it shows, and what is refused without changing anything.
#include <gtest/gtest.h>

#include "sim/router/bus_caller.h"

namespace {

struct Shown {
    const char *pointer, *value;
};

struct SetRow {
    const char *object, *method, *arguments;
    std::vector<Shown> shown; // in the state, afterwards
};

const SetRow SETS[] = {
    {"vrop.ledswitch", "set", R"({"status":"off"})", {{"/vrop.ledswitch/status", R"("off")"}}},
    {"vrop.mesh",
     "set",
     R"({"enable":1,"role":2})",
     {{"/vrop.mesh/current_role", "2"}, {"/vrop.mesh/status", "1"}}},
    {"vrop.webwifisimple",
     "set",
     R"({"wifi24ssid":"Office","wifi24key":"12345678","wifi24apenable":0,"wifi5apenable":0})",
     {{"/vrop.wifi.1.ap/0/ssid", R"("Office")"},
      {"/vrop.wifi.1.ap/0/key", R"("12345678")"},
      {"/vrop.webwifisimple/wifiswitch", "0"},
      {"/vrop.laninfo/5/ssid", R"("Office")"}}},
    {"vrop.webwifi2adv",
     "set",
     R"({"authmode":"NONE","hide":1,"channel":149,"noteffectflag":1})",
     {{"/vrop.wifi.2.ap/0/authmode", R"("NONE")"},
      {"/vrop.wifi.2.ap/0/hide", "1"},
      {"/vrop.webwifi2adv/currentchannel", "149"},
      {"/vrop.webwifi2adv/noteffectflag", ""}}},
    {"vrop.webwifi1adv", "set", R"({"channel":0})", {{"/vrop.webwifi1adv/currentchannel", "6"}}},
    {"vrop.wifi.1.ap.modify",
     "set",
     R"({"index":2,"enable":1,"hide":0,"ssid":"Party","authmode":"NONE","noteffectflag":1})",
     {{"/vrop.wifi.1.ap/2/ssid", R"("Party")"}, {"/vrop.wifi.1.ap/2/key", R"("welcome2020")"}}},
    {"vrop.wifi", "set", R"({"use2_4gpwd":1})", {{"/vrop.webwifisimple/use2_4gpwd", "1"}}},
    {"vrop.waninfo",
     "set",
     R"({"networktype":"BRIDGE"})",
     {{"/vrop.waninfo/workmode", R"("BRIDGE")"}, {"/vrop.waninfo/networktype", R"("BRIDGE")"}}},
    {"vrop.waninfo",
     "set",
     R"({"networktype":"STATIC","gateway":"10.0.0.1","ipaddr":"10.0.0.2","subnetmask":"255.255.255.0","dns":"10.0.0.1,"})",
     {{"/vrop.homewebinfo/ipaddr", R"("10.0.0.2")"}, {"/vrop.waninfo/workmode", R"("ROUTE")"}}},
    {"vrop.waninfo", "set", R"({"protocoltype":"IPv6"})", {{"/vrop.waninfo/workmode", R"("ROUTE")"}}},
    {"vrop.timer",
     "add",
     R"({"action":"ToLedMode","timeoffset":0,"timeoffset2":21600,"enable":1,"week":62,"ssidindex":0})",
     {{"/vrop.timer/2/taskid", "3"}, {"/vrop.timer/2/timeoffset2", "21600"}}},
    {"vrop.timer.modify",
     "set",
     R"({"action":"ToReboot","taskid":1,"timeoffset":60,"enable":1,"week":1,"ssidindex":0})",
     {{"/vrop.timer/0/timeoffset", "60"}, {"/vrop.timer/0/taskid", "1"}, {"/vrop.timer/2", ""}}},
    {"vrop.timer", "delete", R"({"action":"ToReboot","taskid":-1111})", {{"/vrop.timer/0/taskid", "2"}}},
    {"vrop.laninfo.sta",
     "set",
     R"({"limitrateswitch":1,"dsbandwidth":8,"mac":"02:A0:C9:00:00:03"})",
     {{"/vrop.laninfo/2/dsbandwidth", "8"}, {"/vrop.laninfo/2/mac", R"("02a0c9000003")"}}},
    {"vrop.firewall.filter",
     "filterSet",
     R"({"switch":1,"filterOp":"black"})",
     {{"/vrop.firewall.filter/switch", "1"}}},
    {"vrop.firewall.filter",
     "filterAdd",
     R"({"filterOp":"black","filterType":"mac","enable":1,"protocol":0,"mac":"02a0c9000001","platform":0})",
     {{"/vrop.firewall.filter/macfilterLists/1/index", "1"}}},
    {"vrop.firewall.filter",
     "filterDelete",
     R"({"filterType":"mac","index":0,"platform":0})",
     {{"/vrop.firewall.filter/macfilterLists", "[]"}}},
    {"vrop.parent.control",
     "setdev",
     R"({"disconnect":1,"disconnecttime":600,"disconnectsettime":1700000000,"mac":"02a0c9000001","hostname":"PC"})",
     {{"/vrop.parent.control/device/1/disconnecttime", "600"},
      {"/vrop.parent.control/device/1/hostname", R"("PC")"}}},
    {"vrop.parent.control",
     "delete",
     R"({"delall":0,"mac":"02a0c9000005"})",
     {{"/vrop.parent.control/device", "[]"}}},
    {"vrop.parent.urlcontrol",
     "add",
     R"({"filterType":"white","mac":"02a0c9000005","enable":0,"url":"a.example","appname":"A","apptype":6})",
     {{"/vrop.parent.urlcontrol/0/filterType", R"("white")"},
      {"/vrop.parent.urlcontrol/0/list/3/index", "3"}}},
    {"vrop.parent.urlcontrol.modify",
     "set",
     R"({"filterType":"black","mac":"02a0c9000005","enable":1,"url":"chat.example.net","index":2})",
     {{"/vrop.parent.urlcontrol/0/list/2/enable", "1"}, {"/vrop.parent.urlcontrol/0/list/2/apptype", "2"}}},
    {"vrop.parent.urlcontrol",
     "delete",
     R"({"index":-2222,"mac":"02a0c9000005"})",
     {{"/vrop.parent.urlcontrol/0/list", "[]"}}},
    {"vrop.parent.timecontrol",
     "add",
     R"({"enable":1,"timestart":"0800","timeend":"0900","mac":"02a0c9000007","week":"013"})",
     {{"/vrop.parent.timecontrol/1/list",
       R"([{"enable":1,"timestart":"0800","timeend":"0900","week":"013","index":0}])"}}},
    {"vrop.parent.timecontrol", "delete", R"({"index":-1111,"mac":"02a0c9000001"})", {}},
    {"vrop.devinfo",
     "setaccount",
     R"({"user":"admin","oldpasswd":"YWRtaW4xMjM=","newpasswd":"bmV3LXBhc3M="})",
     {{"/account/passwd", R"("bmV3LXBhc3M=")"}}},
    {"vrop.ecm", "set", R"({"cutusb":1})", {{"/vrop.ecm/mounted", "0"}}},
};

TEST(Setting, IsSeenWhereverItShows) {
    for (const SetRow &row : SETS) {
        SCOPED_TRACE(std::string(row.object) + " " + row.method + " " + row.arguments);
        Home home;
        BusCaller client;
        EXPECT_EQ(client.call(row.object, row.method, row.arguments), R"({"result":"0"})");
        for (const Shown &shown : row.shown)
            EXPECT_EQ(home.router.value(shown.pointer), shown.value) << shown.pointer;
    }
}

struct RefusedRow {
    const char *object, *method, *arguments, *reason;
};

const RefusedRow REFUSED[] = {
    {"vrop.ledswitch", "set", R"({"status":"dim"})", "parameter format incorrect: 'status'"},
    {"vrop.ledswitch", "set", R"({"status":1})", "parameter format incorrect: 'status'"},
    {"vrop.ledswitch", "set", "{}", "required parameter: 'status'"},
    {"vrop.ledswitch", "set", R"({"status":"on","color":"red"})", "unrecognized parameter: 'color'"},
    {"vrop.webwifisimple", "set", "{}", "no parameter"},
    {"vrop.webwifisimple", "set", R"({"wifi24ssid":""})", "parameter format incorrect: 'wifi24ssid'"},
    {"vrop.webwifisimple", "set", R"({"wifi5ssid":"123456789012345678901234567890123"})",
     "parameter format incorrect: 'wifi5ssid'"},
    {"vrop.webwifisimple", "set", R"({"wifi24ssid":"Office","wifi5key":"1234567"})",
     "parameter format incorrect: 'wifi5key'"},
    {"vrop.webwifi1adv", "set", R"({"channel":14})", "parameter format incorrect: 'channel'"},
    {"vrop.webwifi1adv", "set", R"({"channel":-1})", "parameter format incorrect: 'channel'"},
    {"vrop.webwifi2adv", "set", R"({"channel":37})", "parameter format incorrect: 'channel'"},
    {"vrop.webwifi1adv", "set", R"({"bandwidth":80})", "parameter format incorrect: 'bandwidth'"},
    {"vrop.webwifi1adv", "set", R"({"txpower":101})", "parameter format incorrect: 'txpower'"},
    {"vrop.webwifi2adv", "set", R"({"authmode":"SAE"})", "parameter format incorrect: 'authmode'"},
    {"vrop.webwifi2adv", "set", R"({"mode":""})", "parameter format incorrect: 'mode'"},
    {"vrop.wifi.1.ap.modify", "set", R"({"index":2,"ssid":"Party","authmode":"WPA2-PSK","key":""})",
     "parameter format incorrect: 'key'"},
    {"vrop.wifi.1.ap.modify", "set", R"({"index":3,"enable":1})", "vrop.wifi.1.ap.modify.3 not found"},
    {"vrop.wifi.2.apclient", "set", R"({"enable":1,"ssid":"Up","key":"short","authmode":"WPA2-PSK"})",
     "parameter format incorrect: 'key'"},
    {"vrop.wifi.2.apclient", "set", R"({"enable":1})", "required parameter: 'ssid'"},
    {"vrop.wifi.guestwificontrol", "set", R"({"controlenable":2})",
     "parameter format incorrect: 'controlenable'"},
    {"vrop.waninfo", "set", R"({"networktype":"DSL"})", "parameter format incorrect: 'networktype'"},
    {"vrop.waninfo", "set", R"({"networktype":"STATIC","ipaddr":"10.0.0.256"})",
     "parameter format incorrect: 'ipaddr'"},
    {"vrop.waninfo", "set", R"({"networktype":"STATIC","subnetmask":"255.0.255.0"})",
     "parameter format incorrect: 'subnetmask'"},
    {"vrop.waninfo", "set", R"({"networktype":"PPPoE","pppoename":""})", "required parameter: 'pppoename'"},
    {"vrop.waninfo", "set", R"({"dnsenable":1,"dns":"8.8.8"})", "parameter format incorrect: 'dns'"},
    {"vrop.waninfo", "set", R"({"protocoltype":"IPv5"})", "parameter format incorrect: 'protocoltype'"},
    {"vrop.timer", "add", R"({"action":"ToReboot","timeoffset":86400,"enable":1,"week":1})",
     "parameter format incorrect: 'timeoffset'"},
    {"vrop.timer.modify", "set", R"({"action":"ToLedMode","taskid":1,"enable":1})", "vrop.timer.1 not found"},
    {"vrop.timer", "delete", R"({"action":"ToReboot","taskid":9})", "vrop.timer.9 not found"},
    {"vrop.mesh", "connect", "{}", "mesh is off"},
    {"vrop.laninfo.sta", "set", R"({"mac":"02a0c9999999","devname":"x"})",
     "vrop.laninfo.sta.02a0c9999999 not found"},
    {"vrop.laninfo.sta", "set", R"({"mac":"02a0c9","devname":"x"})", "parameter format incorrect: 'mac'"},
    {"vrop.firewall.filter", "filterDelete", R"({"filterType":"mac","index":5})",
     "vrop.firewall.filter.5 not found"},
    {"vrop.parent.control", "delete", R"({"delall":0,"mac":"02a0c9000001"})",
     "vrop.parent.control.02a0c9000001 not found"},
    {"vrop.parent.urlcontrol.modify", "set", R"({"filterType":"grey","mac":"02a0c9000005"})",
     "parameter format incorrect: 'filterType'"},
    {"vrop.devinfo", "setaccount", R"({"user":"admin","oldpasswd":"d3Jvbmc=","newpasswd":"bmV3LXBhc3M="})",
     "wrong user or password"},
    {"vrop", "upgrade", R"({"downurl":"/tmp/nothing.img","isreboot":1})", "no image /tmp/nothing.img"},
    {"vrop", "upgrade", R"({"isreboot":1})", "required parameter: 'downurl'"},
};

TEST(Setting, ThatIsRefusedChangesNothing) {
    Home home;
    BusCaller client;
    const std::string before = home.router.state();
    for (const RefusedRow &row : REFUSED) {
        SCOPED_TRACE(std::string(row.object) + " " + row.method + " " + row.arguments);
        const std::string reply = client.call(row.object, row.method, row.arguments);
        EXPECT_EQ(at(reply, "/result"), R"("1")");
        EXPECT_EQ(at(reply, "/failreason"), "\"" + std::string(row.reason) + "\"");
        ASSERT_EQ(home.router.state(), before);
    }
}

// A network may be protected first and given its key after that, as the advanced page does it.
TEST(Setting, OfProtectionMayComeBeforeTheKey) {
    Home home;
    home.router.set_state("/vrop.wifi.1.ap/0/authmode", R"("NONE")");
    home.router.set_state("/vrop.wifi.1.ap/0/key", R"("")");
    BusCaller client;
    EXPECT_EQ(client.call("vrop.webwifi1adv", "set", R"({"authmode":"WPA3-SAE"})"), R"({"result":"0"})");
    EXPECT_EQ(client.call_for("vrop.webwifisimple", "set", "/result", R"({"wifi24key":""})"), R"("1")");
    EXPECT_EQ(client.call("vrop.webwifisimple", "set", R"({"wifi24key":"longenough"})"), R"({"result":"0"})");
}

TEST(Setting, OfARelayMakesItTheWan) {
    Home home;
    BusCaller client;
    const std::string relay =
        R"({"enable":1,"ssid":"Up","key":"upstream1","keepwifiupflag":1,"authmode":"WPA2-PSK"})";
    EXPECT_EQ(client.call("vrop.wifi.1.apclient", "set", relay), R"({"result":"0"})");
    EXPECT_EQ(client.call("vrop.wifi.2.apclient", "set", relay), R"({"result":"0"})");
    EXPECT_EQ(client.call_for("vrop.waninfo", "get", "/vrop.waninfo/workmode"), R"("APCLIENT")");
    EXPECT_EQ(client.call_for("vrop.waninfo", "get", "/vrop.waninfo/radio"), R"("5G")");
    EXPECT_EQ(client.call_for("vrop.wifi.1.apclient", "get", "/vrop.wifi.1.apclient/enable"), "0");
    EXPECT_EQ(client.call_for("vrop.wifi.2.apclient", "get", "/vrop.wifi.2.apclient/relay"), "1");
    EXPECT_EQ(client.call("vrop.waninfo", "set", R"({"networktype":"DHCP"})"), R"({"result":"0"})");
    EXPECT_EQ(home.router.value("/vrop.wifi.2.apclient/enable"), "0");
    EXPECT_EQ(home.router.value("/vrop.waninfo/workmode"), R"("ROUTE")");
}

TEST(Setting, StopsAtAFullList) {
    Home home;
    BusCaller client;
    const std::string task = R"({"action":"ToReboot","timeoffset":0,"enable":1,"week":1})";
    for (int count = 2; count < 16; count++)
        ASSERT_EQ(client.call("vrop.timer", "add", task), R"({"result":"0"})");
    EXPECT_EQ(client.call_for("vrop.timer", "add", "/failreason", task), R"("vrop.timer list is full")");
    EXPECT_EQ(home.router.value("/vrop.timer/15/taskid"), "16");
}

} // namespace
