// SPDX-License-Identifier: Apache-2.0
// What each set sends: every call to the daemon in order, the restart event before the change, and that a
// document that was set can be read back.
#include <gmock/gmock.h>

#include "properties/property_rig.h"

namespace {

using testing::ElementsAre;

struct Change {
    const char *pointer, *json;
};
using Changes = std::vector<Change>;

void change(PropertyRig &rig, const Changes &changes) {
    for (const Change &c : changes)
        rig.router.set_state(c.pointer, c.json);
}

// --- Calls ---

struct SetCase {
    const char *label;
    const char *property;
    Changes before;
    std::string request;
    int result;
    Texts calls;         // to the daemon
    Texts events;        // to the relay
    Texts logged;        // among other lines
    bool paused = false; // two seconds between event and change
};

const std::string EVENT =
    R"(128 {"action": "networkRestartTime", "mac": "A1:B2:C3:D4:E5:F6", "interfaceName": "wan0", "networkDelay": )";
const std::string SHORT_EVENT =
    R"(128 {"action": "networkRestartTime", "mac": "", "interfaceName": "wan0", "networkDelay": 1})";

const std::string READ_SIMPLE = "vrop.webwifisimple get {}";
const std::string READ_GUEST_2G = R"(vrop.wifi.1.ap.modify getbyindex {"index":2})";
const std::string READ_GUEST_5G = R"(vrop.wifi.2.ap.modify getbyindex {"index":2})";
const std::string READ_CONTROL = "vrop.wifi.guestwificontrol get {}";
const std::string READ_TIMER = "vrop.timer list {}";

std::string guest(const char *radio, const char *name) {
    return std::string("vrop.wifi.") + radio + R"(.ap.modify set {"index":2,"enable":0,"hide":1,"ssid":")" +
           name + R"(","authmode":"WPA2-PSK","key":"welcome2020","noteffectflag":1})";
}

Texts operator+(Texts one, const Texts &other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

// The members that the cases do not change.
std::string separate(const std::string &changed) {
    return R"({"wifiInfo":{"wifi2gOpen":1,"wifi2gPwd":"officeoffice","wifi2gHidden":0,"wifi5gOpen":0,)"
           R"("wifi5gName":"Lab_5G","wifi5gPwd":"labnetwork","wifi5gEncryption":5,"wifi5gHidden":1,)"
           R"("use2gPwd":1,)" +
           changed + "}}";
}
const Texts READ_NAMES = {READ_SIMPLE, READ_GUEST_2G, READ_GUEST_5G};
const std::string ENCRYPTION_5G = R"(vrop.webwifi2adv set {"authmode":"WPA2-PSK/WPA3-SAE","hide":1})";

std::string simple_separate(const std::string &name, int backup) {
    return R"(vrop.webwifisimple set {"wifi5backup5ssid":"Lab_5G","wifi5backup24ssid":")" + name +
           R"(","wifi24apenable":1,"wifi24ssid":")" + name +
           R"(","wifi24key":"officeoffice","wifi5apenable":0,"wifi5ssid":"Lab_5G","wifidual":0,"wifi5backup":)" +
           std::to_string(backup) + R"(,"use2_4gpwd":1,"wifi5key":"labnetwork"})";
}

std::string connect(int mode, const std::string &members) {
    return R"({"networkInfo":{"networkMode":)" + std::to_string(mode) + R"(,"networkConnect":{)" + members +
           "}}}";
}

std::string route(int type, const std::string &list) {
    return connect(1, R"("route":{"routeType":)" + std::to_string(type) + R"(,"routeList":{)" + list + "}}");
}

std::string relay(const std::string &members) {
    return connect(2, R"("relay":{"manualWifiName":"Next door",)" + members + "}");
}

const std::string SIMPLE_MERGED =
    R"(vrop.webwifisimple set {"wifi5backup24ssid":"One","wifi5backup5ssid":"One","wifi24apenable":1,)"
    R"("wifi24ssid":"One","wifi24key":"oneforboth","wifi5apenable":1,"wifi5ssid":"One","wifidual":1,)"
    R"("wifi5backup":1,"use2_4gpwd":0,"wifi5key":"oneforboth"})";

const std::vector<SetCase> &set_cases() {
    // clang-format off
    // clang-format off
    static const std::vector<SetCase> CASES = {
        {"separate, both guests follow", "wifiInfo", {},
         separate(R"("wifiSamesOpen":0,"wifi2gName":"Office","wifi2gEncryption":2,"backupWifiOpen":0)"), 0,
         READ_NAMES + Texts{R"(vrop.webwifi1adv set {"authmode":"WPA2-PSK","hide":0})", ENCRYPTION_5G,
         READ_SIMPLE, READ_GUEST_2G, guest("1", "Office_Guest"), READ_GUEST_5G,
         guest("2", "Lab_5G_Guest"), simple_separate("Office", 0)}, {SHORT_EVENT},
         {"ssid_2g:Home", "ssid_5g:Home_5G", "vistor_ssid_2g:Home_Guest", "ret:0"}},
        {"code 1 is not written, own guest names stay, backup changes", "wifiInfo",
         {{"/vrop.wifi.1.ap/2/ssid", R"("Visitors")"}, {"/vrop.wifi.2.ap/2/ssid", R"("Visitors")"}},
         separate(R"("wifiSamesOpen":0,"wifi2gName":"Office","wifi2gEncryption":1,"backupWifiOpen":1)"), 0,
         READ_NAMES + Texts{R"(vrop.webwifi1adv set {"hide":0})", ENCRYPTION_5G, READ_SIMPLE,
         simple_separate("Office", 1)}, {EVENT + "30}"},
         {"wifi5backup24ssid:Office wifi5backup5ssid:Lab_5G"}},
        {"a name of 30 bytes is cut for the guests", "wifiInfo", {}, separate(
         R"("wifiSamesOpen":0,"wifi2gName":"abcdefghijklmnopqrstuvwxyz0123","wifi2gEncryption":1,"backupWifiOpen":0)"),
         0,
         READ_NAMES + Texts{R"(vrop.webwifi1adv set {"hide":0})", ENCRYPTION_5G, READ_SIMPLE, READ_GUEST_2G,
         guest("1", "abcdefghijklmnopqrstuvwx_Guest"), READ_GUEST_5G,
         guest("2", "Lab_5G_Guest"), simple_separate("abcdefghijklmnopqrstuvwxyz0123", 0)}, {SHORT_EVENT},
         {}},
        {"without wifiSamesOpen the encryptions are written", "wifiInfo", {},
         separate(R"("wifi2gName":"Office","wifi2gEncryption":0,"backupWifiOpen":0)"), -1,
         READ_NAMES + Texts{R"(vrop.webwifi1adv set {"authmode":"NONE","hide":0})", ENCRYPTION_5G}, {},
         {"APP send data format is error"}},
        {"without backupWifiOpen", "wifiInfo", {},
         separate(R"("wifiSamesOpen":0,"wifi2gName":"Office","wifi2gEncryption":1)"), -1,
         READ_NAMES + Texts{R"(vrop.webwifi1adv set {"hide":0})", ENCRYPTION_5G}, {},
         {"APP send data is error"}},
        {"merged", "wifiInfo", {},
         R"({"wifiInfo":{"wifiSames":1,"wifiSamesHidden":1,"wifi2gName":"Old2","wifi2gEncryption":4,"wifi5gName":"Old5",)"
         R"("wifi5gEncryption":1,"wifiSamesOpen":1,"wifiSamesName":"One","wifiSamesPwd":"oneforboth","use2gPwd":0,"backupWifiOpen":1}})",
         0, READ_NAMES + Texts{R"(vrop.webwifi1adv set {"authmode":"WPA3-SAE","hide":1})",
         R"(vrop.webwifi2adv set {"hide":1})", READ_SIMPLE, "vrop.webwifi1adv get {}",
         R"(vrop.webwifi2adv set {"authmode":"WPA3-SAE","encrypt":"AES","noteffectflag":1})",
         READ_GUEST_2G, guest("1", "Old2_Guest"), READ_GUEST_5G, guest("2", "Old5_Guest"),
         SIMPLE_MERGED}, {EVENT + "30}"}, {"ret:0"}},
        {"merged without wifiSames", "wifiInfo", {}, R"({"wifiInfo":{"wifiSamesOpen":1,"backupWifiOpen":1}})",
         -1, READ_NAMES + Texts{R"(vrop.webwifi1adv set {"authmode":"WPA-PSK/WPA2-PSK","hide":0})",
         R"(vrop.webwifi2adv set {"authmode":"WPA-PSK/WPA2-PSK","hide":0})"}, {}, {"APP send data is error"}},

        {"bridge", "networkInfo", {}, connect(0, ""), 0, {R"(vrop.waninfo set {"networktype":"BRIDGE"})"},
         {EVENT + "30}"}, {"networkMode:0"}, true},
        {"PPPoE with DNS", "networkInfo", {}, route(0,
         R"("userName":"me@isp","userPwd":"secret","mtu":1480,"dnsEnable":true,"dns1":"1.1.1.1","dns2":"9.9.9.9")"),
         0,
         {R"(vrop.waninfo set {"networktype":"PPPoE","pppoename":"me@isp","pppoepwd":"secret","pppoemtu":1480,)"
         R"("pppoestaticdns":1,"dnsenable":1,"dns":"1.1.1.1,9.9.9.9"})"}, {EVENT + "30}"}, {"networkMode:1"},
         true},
        {"PPPoE without DNS, texts absent", "networkInfo", {}, route(0, R"("mtu":1480,"dnsEnable":0)"), 0,
         {R"(vrop.waninfo set {"networktype":"PPPoE","pppoename":"","pppoepwd":"","pppoemtu":1480,)"
         R"("pppoestaticdns":0,"dnsenable":0})"}, {EVENT + "30}"}, {"set ppoe way fail"}, true},
        {"PPPoE without MTU", "networkInfo", {}, route(0, R"("dnsEnable":0)"), -1, {}, {EVENT + "30}"},
         {"mtu is not exist", "Json Get Obj fail"}, true},
        {"PPPoE without DNS switch", "networkInfo", {}, route(0, R"("mtu":1480)"), -1, {}, {EVENT + "30}"},
         {"ppoe dnsEnable is not exist"}, true},
        {"DHCP", "networkInfo", {}, route(1, R"("dnsEnable":0,"dns1":"1.1.1.1")"), 0,
         {R"(vrop.waninfo set {"dnsenable":0,"networktype":"DHCP"})"}, {EVENT + "30}"}, {}, true},
        {"DHCP with DNS", "networkInfo", {}, route(1, R"("dnsEnable":1,"dns1":"1.1.1.1")"), 0,
         {R"(vrop.waninfo set {"dnsenable":1,"dns":"1.1.1.1,","networktype":"DHCP"})"}, {EVENT + "30}"}, {},
         true},
        {"DHCP without DNS switch", "networkInfo", {}, route(1, ""), -1, {}, {EVENT + "30}"},
         {"dhcp dnsEnable is not exist"}, true},
        {"static, refused", "networkInfo", {}, route(2,
         R"("staticIp":"10.0.0.2","mask":"255.0.255.0","gateWay":"10.0.0.1","dns1":"1.1.1.1","dns2":"9.9.9.9")"),
         0, {R"(vrop.waninfo set {"networktype":"STATIC","gateway":"10.0.0.1","ipaddr":"10.0.0.2",)"
         R"("subnetmask":"255.0.255.0","dns":"1.1.1.1,9.9.9.9"})"}, {EVENT + "30}"}, {"set dhcp way fail"},
         true},
        {"another route type", "networkInfo", {}, route(7, ""), 0, {}, {EVENT + "30}"}, {}, true},
        {"no route type", "networkInfo", {}, connect(1, R"("route":{"routeList":{}})"), -1, {},
         {EVENT + "30}"}, {"routeType is not exist"}, true},
        {"relay", "networkInfo", {},
         relay(R"("manualWifiPwd":"doorkey12","manualEncrytion":1,"sync":1,"relaySignal":1)"), 0,
         {R"(vrop.wifi.2.apclient set {"enable":1,"ssid":"Next door","key":"doorkey12","keepwifiupflag":1,)"
         R"("authmode":"WPA-PSK"})"}, {EVENT + "30}"}, {}, true},
        {"relay on a third radio", "networkInfo", {},
         relay(R"("manualEncrytion":0,"sync":0,"relaySignal":2)"), 0, {}, {EVENT + "30}"},
         {"set relay way fail"}, true},
        {"relay without signal", "networkInfo", {}, relay(R"("manualEncrytion":0,"sync":0)"), -1, {},
         {EVENT + "30}"}, {"relaySignal is not exist"}, true},
        {"relay without sync", "networkInfo", {}, relay(R"("manualEncrytion":0,"relaySignal":0)"), -1, {},
         {EVENT + "30}"}, {"relaySignal is not exist", "Json Get Obj fail"}, true},
        {"relay without encryption", "networkInfo", {}, relay(R"("sync":0,"relaySignal":0)"), -1, {},
         {EVENT + "30}"}, {"manualEncrytion is not exist"}, true},
        {"no network mode", "networkInfo", {}, R"({"networkInfo":{"networkConnect":{}}})", -1, {}, {},
         {"networkMode is not exist"}},
        {"no way to connect", "networkInfo", {}, R"({"networkInfo":{"networkMode":0}})", -1, {}, {}, {}},

        {"the main switch turns both guests on", "visitorsWifi", {},
         R"({"visitorsWifi":{"mainOpen":1,"wifi2gOpen":0,"wifi2gName":"V2","wifi2gOpenPwd":0,"wifi2gPwd":"unused",)"
         R"("wifi5gOpen":0,"wifi5gName":"V5","wifi5gPwd":"welcome99","wifi5gOpenPwd":1}})", 0, {READ_CONTROL,
         R"(vrop.wifi.1.ap.modify set {"index":2,"enable":1,"hide":0,"ssid":"V2","authmode":"NONE","noteffectflag":1})",
         R"(vrop.wifi.2.ap.modify set {"index":2,"enable":1,"hide":0,"ssid":"V5","authmode":"WPA2-PSK","key":"welcome99","noteffectflag":1})",
         R"(vrop.wifi.guestwificontrol set {"controlenable":1,"keeptime":2,"noteffectflag":0})"},
         {EVENT + "5}"}, {"------------------------------------------------------>set ok"}, true},
        {"only 2.4 GHz, main switch unchanged", "visitorsWifi",
         {{"/vrop.wifi.guestwificontrol/controlenable", "1"}},
         R"({"visitorsWifi":{"mainOpen":1,"wifi2gOpen":0,"wifi2gName":"V2","wifi2gOpenPwd":0,"openDuration":4}})",
         0, {READ_CONTROL,
         R"(vrop.wifi.1.ap.modify set {"index":2,"enable":0,"hide":1,"ssid":"V2","authmode":"NONE","noteffectflag":1})",
         R"(vrop.wifi.guestwificontrol set {"controlenable":1,"keeptime":4,"noteffectflag":0})"},
         {EVENT + "5}"}, {}, true},
        {"no 2.4 GHz switch", "visitorsWifi", {}, R"({"visitorsWifi":{"mainOpen":0,"wifi5gOpen":1}})", -1,
         {READ_CONTROL}, {EVENT + "5}"}, {"APP send data is error", "set visitor wifi fail"}, true},
        {"no main switch", "visitorsWifi", {}, R"({"visitorsWifi":{"wifi2gOpen":1}})", -1, {READ_CONTROL},
         {EVENT + "5}"}, {"APP send data is error"}, true},

        {"mesh without a role, none requested before", "mesh", {}, R"({"mesh":{"open":1}})", 0,
         {R"(vrop.mesh set {"enable":1,"role":0})"}, {EVENT + "30}"}, {}, true},
        {"mesh with a role, refused", "mesh", {}, R"({"mesh":{"open":2,"enable":0,"role":1}})", -1,
         {R"(vrop.mesh set {"enable":2,"role":1})"}, {EVENT + "30}"}, {"set mesh open fail"}, true},
        {"mesh remembers the role", "mesh", {}, R"({"mesh":{"open":1}})", 0,
         {R"(vrop.mesh set {"enable":1,"role":1})"}, {EVENT + "30}"}, {}, true},
        {"mesh without open", "mesh", {}, R"({"mesh":{"role":1}})", -1, {}, {EVENT + "30}"},
         {"APP send data is error"}, true},

        {"LEDs off", "ledStatus", {}, R"({"ledStatus":"off"})", 0, {R"(vrop.ledswitch set {"status":"off"})"},
         {}, {}},
        {"LED text cut, refused", "ledStatus", {}, R"({"ledStatus":"brighter"})", -1,
         {R"(vrop.ledswitch set {"status":"brighte"})"}, {}, {}},
        {"LED text empty", "ledStatus", {}, R"({"ledStatus":""})", -1, {}, {}, {"APP send data is error"}},
        {"IPv6 on", "ipv6Status", {}, R"({"ipv6Status":{"open":1}})", 0,
         {R"(vrop.waninfo set {"protocoltype":"IPv4/IPv6"})"}, {}, {}},
        {"IPv6 off", "ipv6Status", {}, R"({"ipv6Status":{"open":0}})", 0,
         {R"(vrop.waninfo set {"protocoltype":"IPv4"})"}, {},
         {"------------->start enter ledStatus set<--------------"}},
        {"IPv6 neither", "ipv6Status", {}, R"({"ipv6Status":{"open":2}})", -1, {}, {}, {"param is error"}},
        {"IPv6 absent", "ipv6Status", {}, R"({"ipv6Status":{}})", -1, {}, {},
         {"param is error", "modify ipv6 status fail"}},
        {"protocol 0", "networkProtocol", {}, R"({"networkProtocol":{"type":0}})", 0,
         {R"(vrop.waninfo set {"protocoltype":"IPv4/IPv6"})"}, {},
         {"ret: 0", R"(msg: {"networkProtocol":{"type":0}})"}},
        {"protocol 1", "networkProtocol", {}, R"({"networkProtocol":{"type":1}})", 0,
         {R"(vrop.waninfo set {"protocoltype":"IPv4"})"}, {}, {}},
        {"protocol 2", "networkProtocol", {}, R"({"networkProtocol":{"type":2}})", 0,
         {R"(vrop.waninfo set {"protocoltype":"IPv6"})"}, {}, {}},
        {"protocol 3", "networkProtocol", {}, R"({"networkProtocol":{"type":3}})", -1, {}, {},
         {"input error", "ret: -1", "modify ipv6 status fail"}},
        {"2.4 GHz radio", "wifi2gSeniorInfo", {},
         R"({"wifi2gSeniorInfo":{"encrypt":"AES","authmode":"WPA2-PSK","mode":"11bgn","txpower":60,"bandwidth":40,"channel":11}})",
         0,
         {R"(vrop.webwifi1adv set {"bandwidth":40,"txpower":60,"channel":11,"encrypt":"AES","authmode":"WPA2-PSK","mode":"11bgn"})"},
         {}, {"authmode: WPA2-PSK, mode: 11bgn txpower: 60 bandwidth: 40 channel: 11"}},
        {"5 GHz radio, members absent", "wifi5gSeniorInfo", {}, R"({"wifi5gSeniorInfo":{"txpower":60}})", -1,
         {R"(vrop.webwifi2adv set {"bandwidth":-1,"txpower":60,"channel":-1,"encrypt":"","authmode":"","mode":""})"},
         {}, {"txpower: 60 bandwidth: -1 channel: -1", "set wifi senior config fail"}},

        {"reboot, time and defaults; modify", "timeReboot", {},
         R"({"timeReboot":[{"open":1,"daysOfWeek":[1,1,1,1,1,0,0]}]})", 0, {READ_TIMER,
         R"(vrop.timer.modify set {"action":"ToReboot","taskid":1,"timeoffset":10800,"enable":1,"week":62,"ssidindex":0})"},
         {}, {"time_s:3:00", "timeoffset:10800", "reboot_flag:0x3E", "retry:7", "n:2"}},
        {"reboot, added", "timeReboot", {{"/vrop.timer", "[]"}},
         R"({"timeReboot":[{"time":"23:59","open":false,"daysOfWeek":[0,0,0,0,0,0,1]}]})", 0, {READ_TIMER,
         R"(vrop.timer add {"action":"ToReboot","timeoffset":86340,"enable":0,"week":1,"ssidindex":0})"}, {},
         {}},
        {"reboot, the last task of the action is modified", "timeReboot", {{"/vrop.timer",
         R"([{"action":"ToReboot","taskid":5},{"action":"ToReboot","taskid":9},{"action":"ToWifi","taskid":3}])"}},
         R"({"timeReboot":[{"time":"x","open":1,"daysOfWeek":[9,0,0,0,0,0,0]}]})", 0, {READ_TIMER,
         R"(vrop.timer.modify set {"action":"ToReboot","taskid":9,"timeoffset":0,"enable":1,"week":18,"ssidindex":0})"},
         {}, {}},
        {"reboot, six days and a null entry", "timeReboot", {},
         R"({"timeReboot":[{"open":1,"daysOfWeek":[1,1,1,1,1,1]},null]})", 0, {READ_TIMER, READ_TIMER}, {},
         {"retry day is not 7", "retry:6"}},
        {"two reboots: the first one remains", "timeReboot", {{"/vrop.timer", "[]"}},
         R"({"timeReboot":[{"time":"1:00","open":1,"daysOfWeek":[1,0,0,0,0,0,0]},{"time":"2:00","open":1,"daysOfWeek":[0,1,0,0,0,0,0]}]})",
         0, {READ_TIMER,
         R"(vrop.timer add {"action":"ToReboot","timeoffset":7200,"enable":1,"week":4,"ssidindex":0})",
         READ_TIMER,
         R"(vrop.timer.modify set {"action":"ToReboot","taskid":1,"timeoffset":3600,"enable":1,"week":2,"ssidindex":0})"},
         {}, {}},
        {"LED schedule, three days; added", "timeLed", {},
         R"({"timeLed":[{"timeFrame":"22:30-06:15","open":true,"daysOfWeek":[1,0,1]}]})", 0, {READ_TIMER,
         R"(vrop.timer add {"action":"ToLedMode","timeoffset":81000,"timeoffset2":22500,"enable":1,"week":10,"ssidindex":0})"},
         {}, {"timeStart:22:30 timeEnd:06:15"}},
        {"LED schedule, empty frame; modified", "timeLed",
         {{"/vrop.timer", R"([{"action":"ToLedMode","taskid":7}])"}},
         R"({"timeLed":[{"timeFrame":"","open":1,"daysOfWeek":[1,1,1,1,1,1,1]}]})", 0, {READ_TIMER,
         R"(vrop.timer.modify set {"action":"ToLedMode","taskid":7,"timeoffset":0,"timeoffset2":21600,"enable":1,"week":127,"ssidindex":0})"},
         {}, {"add timeLed ok"}},
        {"LED schedule, no hyphen in the second", "timeLed", {},
         R"({"timeLed":[{"timeFrame":"1:00-2:00","open":1},{"timeFrame":"22:30","open":1}]})", -1, {}, {},
         {"Json time frame  format is wrong"}},
        {"LED schedule, no frame", "timeLed", {}, R"({"timeLed":[{"open":1}]})", -1, {}, {},
         {"Json Get time frame fail"}},
    };
    // clang-format on
    // clang-format on
    return CASES;
}

// What stood when the property paused for the event to reach the cloud.
struct AtPause {
    size_t writes = 0;
    Texts events;
};

void run(const SetCase &c) {
    SCOPED_TRACE(c.label);
    PropertyRig rig;
    change(rig, c.before);
    clear_main_log();
    AtPause at_pause;
    if (c.paused)
        moving_clock::on_pause([&](moving_clock::Millis) { at_pause = {rig.writes().size(), rig.events()}; });
    EXPECT_EQ(set(c.property, c.request), c.result);
    EXPECT_EQ(rig.calls(), c.calls);
    EXPECT_EQ(c.paused ? at_pause.events : rig.events(), c.events);
    EXPECT_EQ(at_pause.writes, 0U);
    if (c.paused) {
        EXPECT_THAT(moving_clock::pauses(), ElementsAre(2000));
    }
    for (const std::string &message : c.logged)
        EXPECT_TRUE(has_logged(message)) << message;
}

TEST(Set, SendsExactlyWhatTheDaemonNeeds) {
    for (const SetCase &c : set_cases())
        run(c);
}

TEST(Set, ContextOfAnyLengthFitsTheEvent) {
    PropertyRig rig;
    for (const char *property : {"mesh", "wifiInfo"}) {
        const std::string request =
            property == std::string("mesh")
                ? R"({"mesh":{"open":0}})"
                : separate(R"("wifiSamesOpen":0,"wifi2gName":"H","backupWifiOpen":0)");
        set(property, request, std::string(300, 'i').c_str());
        const Texts events = rig.events();
        ASSERT_EQ(events.size(), 1U);
        EXPECT_EQ(events[0].substr(0, 4), "128 ");
        EXPECT_EQ(events[0].size(), 4U + 127U);
    }
}

TEST(Set, MeshModeIsKeptForTheDocument) {
    PropertyRig rig;
    EXPECT_EQ(set("networkInfo", R"({"networkInfo":{"networkMode":0,"meshMode":2,"networkConnect":{}}})"), 0);
    EXPECT_EQ(set("networkInfo", connect(0, "")), 0) << "a request without it leaves it";
    rig.router.set_state("/vrop.waninfo/workmode", R"("MESH")");
    EXPECT_EQ(get("networkInfo"), connect(3, R"("meshMode":2)"));
}

// --- Round trips ---

struct RoundTrip {
    const char *property;
    std::string document; // set, and what get gives back when `read` is empty
    Changes state;        // of the router afterwards
    std::string read = {};
};

const std::vector<RoundTrip> &round_trips() {
    // clang-format off
    // clang-format off
    static const std::vector<RoundTrip> TRIPS = {
        {"wifiInfo",
         R"({"wifiInfo":{"wifi2gOpen":true,"wifi2gName":"B\u00fcro","wifi2gPwd":"officeoffice","wifi2gEncryption":2,"wifi2gHidden":true,)"
         R"("wifi5gOpen":false,"wifi5gName":"Lab","wifi5gPwd":"labnetwork","wifi5gEncryption":5,"wifi5gHidden":false,"wifiSamesOpen":false,)"
         R"("wifiSamesName":"","wifiSamesPwd":"","use2gPwd":false,"backupWifiOpen":true}})",
         {{"/vrop.wifi.1.ap/0/ssid", R"("Büro")"}, {"/vrop.wifi.1.ap/2/ssid", R"("Büro_Guest")"},
         {"/vrop.wifi.2.ap/0/enable", "0"}, {"/vrop.wifi.2.ap/0/authmode", R"("WPA2-PSK/WPA3-SAE")"}}},
        {"wifiInfo",
         R"({"wifiInfo":{"wifiSames":true,"wifiSamesHidden":true,"wifi2gOpen":true,"wifi2gName":"One","wifi2gPwd":"oneforboth",)"
         R"("wifi2gEncryption":2,"wifi2gHidden":true,"wifi5gOpen":true,"wifi5gName":"One","wifi5gPwd":"oneforboth","wifi5gEncryption":2,)"
         R"("wifi5gHidden":true,"wifiSamesOpen":true,"wifiSamesName":"One","wifiSamesPwd":"oneforboth","use2gPwd":false,"backupWifiOpen":false}})",
         {{"/vrop.webwifisimple/wifidual", "1"}, {"/vrop.wifi.2.ap/0/ssid", R"("One")"}}},
        {"networkInfo", connect(0, R"("bridge":{})"), {{"/vrop.waninfo/workmode", R"("BRIDGE")"}}},
        {"networkInfo", route(0,
         R"("userName":"me","userPwd":"pw","mtu":1480,"dnsEnable":true,"dns1":"1.1.1.1","dns2":"9.9.9.9")"),
         {{"/vrop.waninfo/networktype", R"("PPPoE")"}, {"/vrop.waninfo/pppoename", R"("me")"}}},
        {"networkInfo", route(1, R"("dnsEnable":true,"dns1":"8.8.8.8","dns2":"")"),
         {{"/vrop.waninfo/networktype", R"("DHCP")"}, {"/vrop.waninfo/dns", R"("8.8.8.8,")"}}},
        {"networkInfo", route(2,
         R"("staticIp":"10.0.0.2","mask":"255.255.255.0","gateWay":"10.0.0.1","dns1":"1.1.1.1","dns2":"9.9.9.9")"),
         {{"/vrop.waninfo/ipaddr", R"("10.0.0.2")"}, {"/vrop.waninfo/subnetmask", R"("255.255.255.0")"}}},
        {"networkInfo", relay(R"("manualWifiPwd":"doorkey12","manualEncrytion":4,"sync":1,"relaySignal":1)"),
         {{"/vrop.waninfo/workmode", R"("APCLIENT")"}, {"/vrop.waninfo/radio", R"("5G")"}}},
        {"visitorsWifi",
         R"({"visitorsWifi":{"mainOpen":true,"wifi2gOpen":true,"wifi2gName":"V2","wifi2gPwd":"welcome22","wifi2gOpenPwd":true,)"
         R"("wifi5gOpen":true,"wifi5gName":"V5","wifi5gPwd":"welcome55","wifi5gOpenPwd":true,"openDuration":3,"openTime":1800000002}})",
         {{"/vrop.wifi.1.ap/2/ssid", R"("V2")"}, {"/vrop.wifi.2.ap/2/enable", "1"},
         {"/vrop.wifi.guestwificontrol/keeptime", "3"}}},
        {"mesh", R"({"mesh":{"open":true,"role":2}})", {{"/vrop.mesh/enable", "1"}, {"/vrop.mesh/role", "2"}},
         R"({"mesh":{"open":true,"status":1,"currentRole":2}})"},
        {"mesh", R"({"mesh":{"open":false}})", {{"/vrop.mesh/enable", "0"}}},
        {"ledStatus", R"({"ledStatus":"off"})", {{"/vrop.ledswitch/status", R"("off")"}}},
        {"ipv6Status", R"({"ipv6Status":{"open":1}})", {{"/vrop.waninfo/protocoltype", R"("IPv4/IPv6")"}}},
        {"networkProtocol", R"({"networkProtocol":{"type":2}})",
         {{"/vrop.waninfo/protocoltype", R"("IPv6")"}}},
        {"wifi2gSeniorInfo",
         R"({"wifi2gSeniorInfo":{"encrypt":"TKIP/AES","authmode":"WPA-PSK/WPA2-PSK","mode":"11bgn","txpower":60,"bandwidth":40,"channel":11}})",
         {{"/vrop.webwifi1adv/channel", "11"}, {"/vrop.webwifi2adv/channel", "0"}}},
        {"wifi5gSeniorInfo",
         R"({"wifi5gSeniorInfo":{"encrypt":"AES","authmode":"WPA3-SAE","mode":"11ac","txpower":100,"bandwidth":160,"channel":36}})",
         {{"/vrop.webwifi2adv/mode", R"("11ac")"}, {"/vrop.webwifi1adv/mode", R"("11bgnax")"}}},
        {"timeReboot", R"({"timeReboot":[{"daysOfWeek":[0,0,0,0,0,1,1],"time":"07:05","open":true}]})",
         {{"/vrop.timer/0/week", "65"}, {"/vrop.timer/0/timeoffset", "25500"}}},
        {"timeLed", R"({"timeLed":[{"daysOfWeek":[1,1,1,1,1,1,1],"timeFrame":"00:00-06:00","open":false}]})",
         {{"/vrop.timer/2/timeoffset2", "21600"}, {"/vrop.timer/2/taskid", "3"}}},
    };
    // clang-format on
    // clang-format on
    return TRIPS;
}

TEST(Set, WhatWasSetIsWhatTheRouterHasAndWhatGetGives) {
    for (const RoundTrip &trip : round_trips()) {
        SCOPED_TRACE(trip.document);
        PropertyRig rig;
        moving_clock::set(1800000000);
        EXPECT_EQ(set(trip.property, trip.document), 0);
        for (const Change &expected : trip.state)
            EXPECT_EQ(compact(rig.router.value(expected.pointer)), expected.json) << expected.pointer;
        // the order of members is part of the document
        EXPECT_EQ(get(trip.property), compact(trip.read.empty() ? trip.document : trip.read));
    }
}

} // namespace
