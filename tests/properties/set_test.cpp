// SPDX-License-Identifier: Apache-2.0
// What each set sends: every call to the daemon in order, the restart event before the change, what the log
// says, and that a document that was set can be read back.
#include <set>

#include <gmock/gmock.h>

#include "properties/property_rig.h"

namespace {

const std::string SAME = "same";

struct SetCase {
    std::string property, request; // the property's member of the request
    int result;
    Texts happens;          // calls to the daemon, events and pauses
    Texts logged = {};      // among other lines
    std::string reads = {}; // the member that get gives then, where that is asked
    const char *home = "";
};

Texts operator+(Texts one, const Texts &other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

std::string restart(const char *mac, int delay) {
    return std::string(R"({"action": "networkRestartTime", "mac": ")") + mac +
           R"(", "interfaceName": "wan0", "networkDelay": )" + std::to_string(delay) + "}";
}
const std::string RESTART = restart("A1:B2:C3:D4:E5:F6", 30), SHORT_RESTART = restart("", 1);
const std::string GUEST_RESTART = restart("A1:B2:C3:D4:E5:F6", 5);

// The event, two seconds for it to reach the cloud, and then the change.
Texts restarted(const Texts &calls = {}) {
    return Texts{RESTART, "pause 2000"} + calls;
}

const std::string READ_SIMPLE = "vrop.webwifisimple get {}", READ_TIMER = "vrop.timer list {}";
const std::string READ_GUEST_2G = R"(vrop.wifi.1.ap.modify getbyindex {"index":2})";
const std::string READ_GUEST_5G = R"(vrop.wifi.2.ap.modify getbyindex {"index":2})";
const Texts READ_NAMES = {READ_SIMPLE, READ_GUEST_2G, READ_GUEST_5G};
const std::string READ_CONTROL = "vrop.wifi.guestwificontrol get {}";
const std::string SET_5G = R"(vrop.webwifi2adv set {"authmode":"WPA2-PSK/WPA3-SAE","hide":1})";

// The guest networks get their names, as they are otherwise.
Texts guests_follow(const std::string &name_2g, const std::string &name_5g) {
    const std::string start = R"( set {"index":2,"enable":0,"hide":1,"ssid":")";
    const std::string end = R"(","authmode":"WPA2-PSK","key":"welcome2020","noteffectflag":1})";
    return {READ_GUEST_2G, "vrop.wifi.1.ap.modify" + start + name_2g + end, READ_GUEST_5G,
            "vrop.wifi.2.ap.modify" + start + name_5g + end};
}

// What the cases do not change of separate networks, and what the daemon is told of them.
std::string separate(const std::string &name, int encryption, const std::string &last) {
    return R"({"wifi2gOpen":true,"wifi2gName":")" + name +
           R"(","wifi2gPwd":"officeoffice","wifi2gEncryption":)" + std::to_string(encryption) +
           R"(,"wifi2gHidden":false,"wifi5gOpen":false,"wifi5gName":"Lab_5G","wifi5gPwd":"labnetwork",)"
           R"("wifi5gEncryption":5,"wifi5gHidden":true,)" +
           last + "}";
}
const std::string SEPARATE = R"("wifiSamesOpen":false,"wifiSamesName":"","wifiSamesPwd":"","use2gPwd":true,)";

std::string set_separate(const std::string &name, int backup) {
    return R"(vrop.webwifisimple set {"wifi5backup5ssid":"Lab_5G","wifi5backup24ssid":")" + name +
           R"(","wifi24apenable":1,"wifi24ssid":")" + name +
           R"(","wifi24key":"officeoffice","wifi5apenable":0,"wifi5ssid":"Lab_5G","wifidual":0,"wifi5backup":)" +
           std::to_string(backup) + R"(,"use2_4gpwd":1,"wifi5key":"labnetwork"})";
}

std::string connect(int mode, const std::string &members) {
    return R"({"networkMode":)" + std::to_string(mode) + R"(,"networkConnect":{)" + members + "}}";
}

std::string route(int type, const std::string &list) {
    return connect(1, R"("route":{"routeType":)" + std::to_string(type) + R"(,"routeList":{)" + list + "}}");
}

std::string relay(const std::string &members) {
    return connect(2, R"("relay":{"manualWifiName":"Next door",)" + members + "}");
}

// clang-format off
const std::vector<SetCase> CASES = {
    // both guest networks follow
    {"wifiInfo", separate("Büro", 2, SEPARATE + R"("backupWifiOpen":false)"), 0,
     READ_NAMES + Texts{R"(vrop.webwifi1adv set {"authmode":"WPA2-PSK","hide":0})", SET_5G, READ_SIMPLE} +
     guests_follow("Büro_Guest", "Lab_5G_Guest") + Texts{set_separate("Büro", 0), SHORT_RESTART},
     {"ssid_2g:Home", "ssid_5g:Home_5G", "vistor_ssid_2g:Home_Guest", "ret:0"}, SAME},
    // code 1 is not written, guest names of their own stay, and the backup changes
    {"wifiInfo", separate("Office", 1, SEPARATE + R"("backupWifiOpen":true)"), 0,
     READ_NAMES + Texts{R"(vrop.webwifi1adv set {"hide":0})", SET_5G, READ_SIMPLE, set_separate("Office", 1), RESTART},
     {"wifi5backup24ssid:Office wifi5backup5ssid:Lab_5G"}, "",
     R"({"vrop.wifi.1.ap":[{"index":0,"ssid":"Home"},{},{"index":2,"ssid":"Visitors"}],)"
     R"("vrop.wifi.2.ap":[{"index":0,"ssid":"Home_5G"},{},{"index":2,"ssid":"Visitors"}]})"},
    // what is missing is noticed after the encryptions were written
    {"wifiInfo", separate("Office", 0, R"("backupWifiOpen":0)"), -1,
     READ_NAMES + Texts{R"(vrop.webwifi1adv set {"authmode":"NONE","hide":0})", SET_5G},
     {"APP send data format is error"}},
    {"wifiInfo",
     R"({"wifiSames":1,"wifiSamesHidden":1,"wifi2gName":"Old2","wifi2gEncryption":4,"wifi5gName":"Old5","wifi5gEncryption":1,)"
     R"("wifiSamesOpen":1,"wifiSamesName":"One","wifiSamesPwd":"oneforboth","use2gPwd":0,"backupWifiOpen":1})", 0,
     READ_NAMES + Texts{R"(vrop.webwifi1adv set {"authmode":"WPA3-SAE","hide":1})", R"(vrop.webwifi2adv set {"hide":1})",
     READ_SIMPLE, "vrop.webwifi1adv get {}",
     R"(vrop.webwifi2adv set {"authmode":"WPA3-SAE","encrypt":"AES","noteffectflag":1})"} +
     guests_follow("Old2_Guest", "Old5_Guest") +
     Texts{R"(vrop.webwifisimple set {"wifi5backup24ssid":"One","wifi5backup5ssid":"One","wifi24apenable":1,)"
     R"("wifi24ssid":"One","wifi24key":"oneforboth","wifi5apenable":1,"wifi5ssid":"One","wifidual":1,)"
     R"("wifi5backup":1,"use2_4gpwd":0,"wifi5key":"oneforboth"})", RESTART}, {"ret:0"}},

    {"networkInfo", connect(0, R"("bridge":{})"), 0, restarted({R"(vrop.waninfo set {"networktype":"BRIDGE"})"}),
     {"networkMode:0"}, SAME},
    {"networkInfo", route(0, R"("userName":"me","userPwd":"pw","mtu":1480,"dnsEnable":true,"dns1":"1.1.1.1","dns2":"9.9.9.9")"),
     0, restarted({R"(vrop.waninfo set {"networktype":"PPPoE","pppoename":"me","pppoepwd":"pw","pppoemtu":1480,)"
     R"("pppoestaticdns":1,"dnsenable":1,"dns":"1.1.1.1,9.9.9.9"})"}), {"networkMode:1"}, SAME},
    {"networkInfo", route(0, R"("mtu":1480,"dnsEnable":0)"), 0,
     restarted({R"(vrop.waninfo set {"networktype":"PPPoE","pppoename":"","pppoepwd":"","pppoemtu":1480,)"
     R"("pppoestaticdns":0,"dnsenable":0})"}), {"set ppoe way fail"}},
    {"networkInfo", route(0, R"("dnsEnable":0)"), -1, restarted(), {"mtu is not exist", "Json Get Obj fail"}},
    {"networkInfo", route(1, R"("dnsEnable":0,"dns1":"1.1.1.1")"), 0,
     restarted({R"(vrop.waninfo set {"dnsenable":0,"networktype":"DHCP"})"})},
    {"networkInfo", route(1, R"("dnsEnable":true,"dns1":"1.1.1.1","dns2":"")"), 0,
     restarted({R"(vrop.waninfo set {"dnsenable":1,"dns":"1.1.1.1,","networktype":"DHCP"})"}), {}, SAME},
    {"networkInfo", route(1, ""), -1, restarted(), {"dhcp dnsEnable is not exist"}},
    {"networkInfo",
     route(2, R"("staticIp":"10.0.0.2","mask":"255.0.0.0","gateWay":"10.0.0.1","dns1":"1.1.1.1","dns2":"9.9.9.9")"), 0,
     restarted({R"(vrop.waninfo set {"networktype":"STATIC","gateway":"10.0.0.1","ipaddr":"10.0.0.2",)"
     R"("subnetmask":"255.0.0.0","dns":"1.1.1.1,9.9.9.9"})"}), {}, SAME},
    {"networkInfo", route(7, ""), 0, restarted()},
    {"networkInfo", connect(1, R"("route":{"routeList":{}})"), -1, restarted(), {"routeType is not exist"}},
    {"networkInfo", relay(R"("manualWifiPwd":"doorkey12","manualEncrytion":1,"sync":1,"relaySignal":1)"), 0,
     restarted({R"(vrop.wifi.2.apclient set {"enable":1,"ssid":"Next door","key":"doorkey12","keepwifiupflag":1,)"
     R"("authmode":"WPA-PSK"})"}), {}, SAME},
    {"networkInfo", relay(R"("manualEncrytion":0,"sync":0,"relaySignal":2)"), 0, restarted(), {"set relay way fail"}},
    {"networkInfo", relay(R"("manualEncrytion":0,"relaySignal":0)"), -1, restarted(), {"relaySignal is not exist"}},
    {"networkInfo", relay(R"("sync":0,"relaySignal":0)"), -1, restarted(), {"manualEncrytion is not exist"}},
    {"networkInfo", R"({"networkConnect":{}})", -1, {}, {"networkMode is not exist"}},
    // the mesh mode is kept for the document, also by a request without it
    {"networkInfo", R"({"networkMode":0,"meshMode":2,"networkConnect":{}})", 0,
     restarted({R"(vrop.waninfo set {"networktype":"BRIDGE"})"})},
    {"networkInfo", route(7, ""), 0, restarted(), {}, connect(3, R"("meshMode":2)"), R"({"vrop.waninfo":{"workmode":"MESH"}})"},

    // turning the main switch turns both networks
    {"visitorsWifi",
     R"({"mainOpen":1,"wifi2gOpen":0,"wifi2gName":"V2","wifi2gOpenPwd":0,"wifi2gPwd":"unused","wifi5gOpen":0,)"
     R"("wifi5gName":"V5","wifi5gPwd":"welcome99","wifi5gOpenPwd":1})", 0,
     {GUEST_RESTART, "pause 2000", READ_CONTROL,
     R"(vrop.wifi.1.ap.modify set {"index":2,"enable":1,"hide":0,"ssid":"V2","authmode":"NONE","noteffectflag":1})",
     R"(vrop.wifi.2.ap.modify set {"index":2,"enable":1,"hide":0,"ssid":"V5","authmode":"WPA2-PSK","key":"welcome99","noteffectflag":1})",
     R"(vrop.wifi.guestwificontrol set {"controlenable":1,"keeptime":2,"noteffectflag":0})"},
     {"------------------------------------------------------>set ok"},
     R"({"mainOpen":true,"wifi2gOpen":true,"wifi2gName":"V2","wifi2gPwd":"welcome2020","wifi2gOpenPwd":false,"wifi5gOpen":true,)"
     R"("wifi5gName":"V5","wifi5gPwd":"welcome99","wifi5gOpenPwd":true,"openDuration":2,"openTime":1800000002})"},
    {"visitorsWifi", R"({"mainOpen":1,"wifi2gOpen":0,"wifi2gName":"V2","wifi2gOpenPwd":0,"openDuration":4})", 0,
     {GUEST_RESTART, "pause 2000", READ_CONTROL,
     R"(vrop.wifi.1.ap.modify set {"index":2,"enable":0,"hide":1,"ssid":"V2","authmode":"NONE","noteffectflag":1})",
     R"(vrop.wifi.guestwificontrol set {"controlenable":1,"keeptime":4,"noteffectflag":0})"}, {}, "",
     R"({"vrop.wifi.guestwificontrol":{"controlenable":1}})"},
    {"visitorsWifi", R"({"mainOpen":0,"wifi5gOpen":1})", -1,
     {GUEST_RESTART, "pause 2000", READ_CONTROL}, {"APP send data is error", "set visitor wifi fail"}},

    // a role that is not given is the last one that was
    {"mesh", R"({"open":1})", 0, restarted({R"(vrop.mesh set {"enable":1,"role":0})"})},
    {"mesh", R"({"open":2,"enable":0,"role":1})", -1, restarted({R"(vrop.mesh set {"enable":2,"role":1})"}),
     {"set mesh open fail"}},
    {"mesh", R"({"open":true})", 0, restarted({R"(vrop.mesh set {"enable":1,"role":1})"}), {},
     R"({"open":true,"status":1,"currentRole":1})"},
    {"mesh", R"({"role":1})", -1, restarted(), {"APP send data is error"}},

    {"ledStatus", R"("off")", 0, {R"(vrop.ledswitch set {"status":"off"})"}, {}, SAME},
    {"ledStatus", R"("brighter")", -1, {R"(vrop.ledswitch set {"status":"brighte"})"}},
    {"ledStatus", R"("")", -1, {}, {"APP send data is error"}},
    {"ipv6Status", R"({"open":1})", 0, {R"(vrop.waninfo set {"protocoltype":"IPv4/IPv6"})"}, {}, SAME},
    {"ipv6Status", R"({"open":0})", 0, {R"(vrop.waninfo set {"protocoltype":"IPv4"})"},
     {"------------->start enter ledStatus set<--------------"}},
    {"ipv6Status", R"({"open":2})", -1, {}, {"param is error"}},
    {"ipv6Status", R"({})", -1, {}, {"param is error", "modify ipv6 status fail"}},
    {"networkProtocol", R"({"type":0})", 0, {R"(vrop.waninfo set {"protocoltype":"IPv4/IPv6"})"},
     {"ret: 0", R"(msg: {"networkProtocol":{"type":0}})"}},
    {"networkProtocol", R"({"type":2})", 0, {R"(vrop.waninfo set {"protocoltype":"IPv6"})"}, {}, SAME},
    {"networkProtocol", R"({"type":3})", -1, {}, {"input error", "ret: -1", "modify ipv6 status fail"}},
    {"wifi2gSeniorInfo",
     R"({"encrypt":"TKIP/AES","authmode":"WPA2-PSK","mode":"11bgn","txpower":60,"bandwidth":40,"channel":11})", 0,
     {R"(vrop.webwifi1adv set {"bandwidth":40,"txpower":60,"channel":11,"encrypt":"TKIP/AES","authmode":"WPA2-PSK","mode":"11bgn"})"},
     {"authmode: WPA2-PSK, mode: 11bgn txpower: 60 bandwidth: 40 channel: 11"}, SAME},
    {"wifi5gSeniorInfo", R"({"txpower":60})", -1,
     {R"(vrop.webwifi2adv set {"bandwidth":-1,"txpower":60,"channel":-1,"encrypt":"","authmode":"","mode":""})"},
     {"txpower: 60 bandwidth: -1 channel: -1", "set wifi senior config fail"}},
    {"wifi5gSeniorInfo",
     R"({"encrypt":"AES","authmode":"WPA3-SAE","mode":"11ac","txpower":99,"bandwidth":160,"channel":36})", 0,
     {R"(vrop.webwifi2adv set {"bandwidth":160,"txpower":99,"channel":36,"encrypt":"AES","authmode":"WPA3-SAE","mode":"11ac"})"},
     {}, SAME},

    {"timeReboot", R"([{"open":1,"daysOfWeek":[1,1,1,1,1,0,0]}])", 0, {READ_TIMER,
     R"(vrop.timer.modify set {"action":"ToReboot","taskid":1,"timeoffset":10800,"enable":1,"week":62,"ssidindex":0})"},
     {"time_s:3:00", "timeoffset:10800", "reboot_flag:0x3E", "retry:7", "n:2"}},
    {"timeReboot", R"([{"daysOfWeek":[0,0,0,0,0,1,1],"time":"23:59","open":false}])", 0, {READ_TIMER,
     R"(vrop.timer add {"action":"ToReboot","timeoffset":86340,"enable":0,"week":65,"ssidindex":0})"}, {}, SAME,
     R"({"vrop.timer":[]})"},
    // the last task of the action is modified; days are shifted as they are
    {"timeReboot", R"([{"time":"123:4","open":1,"daysOfWeek":[9,0,0,0,0,-1,0]}])", 0, {READ_TIMER,
     R"(vrop.timer.modify set {"action":"ToReboot","taskid":9,"timeoffset":0,"enable":1,"week":210,"ssidindex":0})"}, {}, "",
     R"({"vrop.timer":[{"action":"ToReboot","taskid":5},{"action":"ToReboot","taskid":9},{"action":"ToWifi","taskid":3}]})"},
    {"timeReboot", R"([{"open":1,"daysOfWeek":[1,1,1,1,1,1]},null])", 0, {READ_TIMER, READ_TIMER},
     {"retry day is not 7", "retry:6"}},
    // of two entries the first one remains
    {"timeReboot", R"([{"time":"1:00","open":1,"daysOfWeek":[1,0,0,0,0,0,0]},{"time":"2:00","open":1,"daysOfWeek":[0,1,0,0,0,0,0]}])",
     0, {READ_TIMER, R"(vrop.timer add {"action":"ToReboot","timeoffset":7200,"enable":1,"week":4,"ssidindex":0})", READ_TIMER,
     R"(vrop.timer.modify set {"action":"ToReboot","taskid":1,"timeoffset":3600,"enable":1,"week":2,"ssidindex":0})"}, {},
     R"([{"daysOfWeek":[1,0,0,0,0,0,0],"time":"01:00","open":true}])", R"({"vrop.timer":[]})"},
    {"timeLed", R"([{"timeFrame":"7:05-12","open":true,"daysOfWeek":[1,0,1]}])", 0, {READ_TIMER,
     R"(vrop.timer add {"action":"ToLedMode","timeoffset":25500,"timeoffset2":0,"enable":1,"week":10,"ssidindex":0})"},
     {"timeStart:7:05 timeEnd:12"}, R"([{"daysOfWeek":[1,0,1,0,0,0,0],"timeFrame":"07:05-00:00","open":true}])"},
    {"timeLed", R"([{"timeFrame":"","open":1,"daysOfWeek":[1,1,1,1,1,1,1]}])", 0, {READ_TIMER,
     R"(vrop.timer.modify set {"action":"ToLedMode","taskid":7,"timeoffset":0,"timeoffset2":21600,"enable":1,"week":127,"ssidindex":0})"},
     {"add timeLed ok"}, R"([{"daysOfWeek":[1,1,1,1,1,1,1],"timeFrame":"00:00-06:00","open":true}])",
     R"({"vrop.timer":[{"action":"ToLedMode","taskid":7}]})"},
    {"timeLed", R"([{"timeFrame":"123456789-123456789"},{"timeFrame":"1-2-3"},{"timeFrame":"-"},{"timeFrame":"22:30"}])", -1, {},
     {"timeStart:1234567 timeEnd:1234567", "timeStart:1 timeEnd:2-3", "timeStart: timeEnd:", "Json time frame  format is wrong"}},
    {"apDevices", R"([{"mac":"02a0c9000003","operationType":1,"name":"Anna"}])", 0,
     {R"(vrop.laninfo.sta getbymac {"mac":"02a0c9000003"})", R"(vrop.laninfo.sta set {"mac":"02a0c9000003","devname":"Anna"})"},
     {"modify name"},
     R"([{"mac":"02a0c9000003","parentalEnable":false,"name":"Anna","onlineStatus":1,"joinWay":2,"guestEnable":false,)"
     R"("blackEnable":false,"limitSpeed":{"open":false},"parentFlag":0,"timeControlEnable":false,"webControlEnable":false,)"
     R"("onlineNotice":true}])", WITH_TASKS},
    {"hcdn", R"({"samba":true,"open":1})", 0, restarted({R"(vrop.ecm set {"hcdn_open":1,"samba":1})"}), {},
     R"({"enable":true,"open":true,"samba":true,"inMemory":false,"outMemory":false,"usb":true,"path":"/mnt/usb0",)"
     R"("natType":0,"upnp":false,"registered":false})"},
};
// clang-format on

void run(const SetCase &c) {
    const std::string start = "{\"" + c.property + "\":", request = start + c.request + "}";
    SCOPED_TRACE(request);
    PropertyRig rig(c.home);
    moving_clock::set(1800000000);
    Texts happened;
    if (!c.property.starts_with("time")) // a schedule pauses on a thread of its own
        moving_clock::on_pause([&](moving_clock::Millis millis) {
            happened = happened + rig.take() + Texts{"pause " + std::to_string(millis)};
        });
    EXPECT_EQ(set(c.property, request), c.result);
    EXPECT_EQ(happened + rig.take(), c.happens);
    EXPECT_THAT(log_messages(), testing::IsSupersetOf(c.logged));
    // the order of members is part of the document
    if (!c.reads.empty()) {
        EXPECT_EQ(get(c.property), c.reads == SAME ? request : start + c.reads + "}");
    }
}

TEST(Set, SendsExactlyWhatTheDaemonNeedsAndIsReadBack) {
    std::set<std::string> read_back;
    for (const SetCase &c : CASES) {
        run(c);
        if (!c.reads.empty()) read_back.insert(c.property);
    }
    EXPECT_EQ(read_back.size(), rows_with(&property_row::set).size());
}

} // namespace
