// SPDX-License-Identifier: Apache-2.0
// What each operation does when one of its calls is refused, not answered, or answered without what was asked
// for. The calls are those of a good run; each of them is then spoiled in turn.
#include <algorithm>
#include <map>

#include <gmock/gmock.h>

#include "properties/property_rig.h"

namespace {

using router::Fault;

// The object and method of a call line.
struct Target {
    std::string object, method;
    bool reads() const { return method.starts_with("get") || method == "list"; }
    std::string text() const { return object + " " + method; }
};

Target target_of(const std::string &line) {
    const size_t blank = line.find(' ');
    return {line.substr(0, blank), line.substr(blank + 1, line.find(' ', blank + 1) - blank - 1)};
}

// Every object and method that the calls name, once.
std::vector<Target> targets_of(const Texts &calls) {
    std::vector<Target> targets;
    for (const std::string &line : calls) {
        const Target target = target_of(line);
        if (std::none_of(targets.begin(), targets.end(),
                         [&](const Target &t) { return t.text() == target.text(); }))
            targets.push_back(target);
    }
    return targets;
}

// Refused, absent, no data; answered without the member, with an empty one, with one of another type.
std::vector<Fault> faults_for(const Target &target) {
    const std::string empty = R"({"result":0,")" + target.object + R"(":{}})";
    const std::string other = R"({"result":[],")" + target.object + R"(":"text"})";
    return {{.kind = Fault::Kind::Result, .object = target.object, .method = target.method, .value = 2},
            {.kind = Fault::Kind::Absent, .object = target.object},
            {.kind = Fault::Kind::Status, .object = target.object, .method = target.method, .value = 7},
            {.kind = Fault::Kind::Reply, .object = target.object, .method = target.method, .reply = "{}"},
            {.kind = Fault::Kind::Reply, .object = target.object, .method = target.method, .reply = empty},
            {.kind = Fault::Kind::Reply, .object = target.object, .method = target.method, .reply = other}};
}

const std::string WIFI =
    R"({"wifiInfo":{"wifi2gOpen":1,"wifi2gName":"Two","wifi2gPwd":"officeoffice","wifi2gEncryption":2,"wifi2gHidden":0,"wifi5gOpen":1,)"
    R"("wifi5gName":"Five","wifi5gPwd":"officeoffice","wifi5gEncryption":2,"wifi5gHidden":0,"wifiSamesOpen":0,"use2gPwd":0,"backupWifiOpen":0}})";
const std::string MERGED =
    R"({"wifiInfo":{"wifiSames":1,"wifi2gName":"Two","wifi5gName":"Five","wifiSamesOpen":1,"wifiSamesName":"One",)"
    R"("wifiSamesPwd":"oneforboth","use2gPwd":0,"backupWifiOpen":0}})";
const std::string BRIDGE = R"({"networkInfo":{"networkMode":0,"networkConnect":{}}})";
const std::string RELAY =
    R"({"networkInfo":{"networkMode":2,"networkConnect":{"relay":{"manualWifiName":"Next","manualWifiPwd":"doorkey12",)"
    R"("manualEncrytion":2,"sync":0,"relaySignal":0}}}})";
const std::string VISITORS =
    R"({"visitorsWifi":{"mainOpen":1,"wifi2gOpen":1,"wifi2gName":"V2","wifi2gOpenPwd":0,"wifi5gOpen":1,"wifi5gName":"V5","wifi5gOpenPwd":0}})";
const std::string SENIOR =
    R"(SeniorInfo":{"encrypt":"AES","authmode":"WPA2-PSK","mode":"11n","txpower":60,"bandwidth":20,"channel":0}})";
const std::string REBOOT = R"({"timeReboot":[{"time":"1:00","open":1,"daysOfWeek":[1,0,0,0,0,0,0]}]})";
const std::string LED = R"({"timeLed":[{"timeFrame":"1:00-2:00","open":1}]})";

struct Outcome {
    int result;
    Texts missing;      // calls of the good run that are not made then
    const char *logged; // or null
};
struct Operation {
    const char *property;
    std::string request;
    std::map<std::string, Outcome> spoilt; // by call; what stands in no row changes nothing else
};

const std::string G2 = "vrop.wifi.1.ap.modify ", G5 = "vrop.wifi.2.ap.modify ";

const std::vector<Operation> &operations() {
    // clang-format off
    static const std::vector<Operation> OPERATIONS = {
        {"wifiInfo", WIFI,
         {{"vrop.webwifisimple get", {0, {G2 + "getbyindex", G5 + "getbyindex", G2 + "set", G5 + "set"}, nullptr}},
          {G2 + "getbyindex", {0, {G2 + "set"}, "get 2.4g visitor info fail"}},
          {G5 + "getbyindex", {0, {G5 + "set"}, "get 5g wifi info fail"}},
          {"vrop.webwifi1adv set", {0, {}, "set 2.4G  encrytion and hidden fail"}},
          {"vrop.webwifi2adv set", {0, {}, "set 5G  encrytion and hidden fail"}},
          {"vrop.webwifisimple set", {-1, {}, "set 2.4G and 5G wifi fail"}}}},
        {"wifiInfo", MERGED,
         {{"vrop.webwifisimple get", {0, {G2 + "getbyindex", G5 + "getbyindex", G2 + "set", G5 + "set"}, nullptr}},
          {G2 + "getbyindex", {0, {G2 + "set"}, nullptr}},
          {G5 + "getbyindex", {0, {G5 + "set"}, nullptr}},
          {"vrop.webwifi1adv get", {0, {"vrop.webwifi2adv set"}, nullptr}},
          {"vrop.webwifisimple set", {-1, {}, "set bandSteeringConfig fail"}}}},
        {"networkInfo", BRIDGE, {{"vrop.waninfo set", {0, {}, "set bridge way fail"}}}},
        {"networkInfo", RELAY, {{"vrop.wifi.1.apclient set", {0, {}, "set relay way fail"}}}},
        {"visitorsWifi", VISITORS, {{"vrop.wifi.guestwificontrol set", {-1, {}, "set visitor wifi fail"}}}},
        {"mesh", R"({"mesh":{"open":1}})", {{"vrop.mesh set", {-1, {}, "set mesh open fail"}}}},
        {"ledStatus", R"({"ledStatus":"off"})", {{"vrop.ledswitch set", {-1, {}, nullptr}}}},
        {"ipv6Status", R"({"ipv6Status":{"open":1}})",
         {{"vrop.waninfo set", {-1, {}, "modify ipv6 status fail"}}}},
        {"networkProtocol", R"({"networkProtocol":{"type":2}})",
         {{"vrop.waninfo set", {-1, {}, "change networkProtocol fail"}}}},
        {"wifi2gSeniorInfo", R"({"wifi2g)" + SENIOR,
         {{"vrop.webwifi1adv set", {-1, {}, "set wifi senior config fail"}}}},
        {"wifi5gSeniorInfo", R"({"wifi5g)" + SENIOR,
         {{"vrop.webwifi2adv set", {-1, {}, "set wifi senior config fail"}}}},
        {"timeReboot", REBOOT,
         {{"vrop.timer list", {0, {"vrop.timer.modify set"}, nullptr}},
          {"vrop.timer.modify set", {0, {}, "set timeReboot config fail"}}}},
        {"timeLed", LED,
         {{"vrop.timer list", {0, {"vrop.timer add"}, nullptr}},
          {"vrop.timer add", {0, {}, "apply entry 0 fail"}}}},
    };
    // clang-format on
    return OPERATIONS;
}

// The calls by object and method, without the spoilt ones.
Texts names_of(const Texts &calls, const Fault &fault) {
    Texts names;
    for (const std::string &line : calls) {
        const Target target = target_of(line);
        const bool spoilt = target.object == fault.object &&
                            (fault.kind == Fault::Kind::Absent || target.method == fault.method);
        if (!spoilt) names.push_back(target.text());
    }
    return names;
}

void remove_last(Texts *names, const std::string &name) {
    const auto found = std::find(names->rbegin(), names->rend(), name);
    if (found != names->rend()) names->erase(std::next(found).base());
}

Outcome expected_outcome(const Operation &operation, const Target &target, const Fault &fault) {
    Outcome expected{0, {}, nullptr};
    // of what a write answers only a "result" that is not 0 counts
    if (fault.kind == Fault::Kind::Reply && !target.reads()) return expected;
    for (const auto &[call, outcome] : operation.spoilt) {
        // an object that is absent spoils all its calls
        const bool is_spoilt =
            fault.kind == Fault::Kind::Absent ? call.starts_with(target.object + " ") : call == target.text();
        if (!is_spoilt) continue;
        expected.result = std::min(expected.result, outcome.result);
        expected.missing.insert(expected.missing.end(), outcome.missing.begin(), outcome.missing.end());
        if (fault.reply == "{}" && call == target.text()) expected.logged = outcome.logged;
    }
    return expected;
}

void spoil(const Operation &operation, const Target &target, const Fault &fault, const Texts &good_calls) {
    SCOPED_TRACE(std::string(operation.property) + ", " + target.text() + ", fault " +
                 std::to_string(static_cast<int>(fault.kind)) + " " + fault.reply);
    PropertyRig rig;
    clear_main_log();
    rig.router.add_fault(fault);
    const Outcome expected = expected_outcome(operation, target, fault);
    EXPECT_EQ(set(operation.property, operation.request), expected.result);
    Texts names = names_of(good_calls, fault);
    for (const std::string &name : expected.missing)
        remove_last(&names, name);
    EXPECT_EQ(names_of(rig.calls(), fault), names);
    if (expected.logged != nullptr) {
        EXPECT_TRUE(has_logged(expected.logged)) << expected.logged;
    }
}

TEST(SpoiltCalls, OfSets) {
    for (const Operation &operation : operations()) {
        Texts good_calls;
        {
            PropertyRig rig;
            ASSERT_EQ(set(operation.property, operation.request), 0);
            good_calls = rig.calls();
        }
        std::vector<Target> targets = targets_of(good_calls);
        for (const Target &target : targets)
            for (const Fault &fault : faults_for(target))
                spoil(operation, target, fault, good_calls);
        for (const auto &row : operation.spoilt)
            EXPECT_TRUE(std::any_of(targets.begin(), targets.end(),
                                    [&](const Target &t) { return t.text() == row.first; }))
                << operation.property << " makes no call " << row.first;
    }
}

// A get answers from what it read before, or from zeroes; only the LED switch needs its daemon.
TEST(SpoiltCalls, OfGets) {
    constexpr const char *KEEPING[] = {"deviceInfo", "deviceStatus", "networkInfo", "visitorsWifi", "mesh"};
    for (const property_row *row : rows_with_get()) {
        const std::string name = row->name;
        const bool keeps = std::find(std::begin(KEEPING), std::end(KEEPING), name) != std::end(KEEPING);
        PropertyRig rig;
        const std::string good = get(name);
        ASSERT_TRUE(JsonRoot(parsed(good))) << name;
        for (const Target &target : targets_of(rig.calls())) {
            for (const Fault &fault : faults_for(target)) {
                SCOPED_TRACE(name + ", " + target.text() + ", fault " +
                             std::to_string(static_cast<int>(fault.kind)) + " " + fault.reply);
                rig.router.add_fault(fault);
                const std::string document = get(name);
                rig.router.clear_faults();
                const bool answered = fault.kind == Fault::Kind::Reply && fault.reply != "{}";
                if (name == "ledStatus" && !answered) {
                    EXPECT_EQ(document, "-1");
                    continue;
                }
                EXPECT_TRUE(document.starts_with("{\"" + name + "\":")) << document;
                if (keeps && !answered) {
                    EXPECT_EQ(document, good);
                }
            }
        }
    }
}

TEST(FreshAgent, AnswersGetsWithoutADaemon) {
    const std::map<std::string, std::string> DOCUMENTS = {
        {"deviceInfo",
         R"({"deviceInfo":{"productId":"Tq83mZc1wk","sn":"","deviceModel":"","fwVersion":"","outFwVersion":"","hdVersion":"",)"
         R"("manufacturer":"","mac":"","areaCode":"","imei":"","ip":"","onlineTime":0}})"},
        {"ledStatus", "-1"},
        {"wifiInfo",
         R"({"wifiInfo":{"wifi2gOpen":false,"wifi2gName":"","wifi2gPwd":"","wifi2gEncryption":0,"wifi2gHidden":true,)"
         R"("wifi5gOpen":false,"wifi5gName":"","wifi5gPwd":"","wifi5gEncryption":0,"wifi5gHidden":true,"wifiSamesOpen":false,)"
         R"("wifiSamesName":"","wifiSamesPwd":"","use2gPwd":false,"backupWifiOpen":false}})"},
        {"timeReboot", R"({"timeReboot":[]})"},
        {"networkInfo", R"({"networkInfo":{"networkMode":0,"networkConnect":{"bridge":{}}}})"},
        {"visitorsWifi",
         R"({"visitorsWifi":{"mainOpen":false,"wifi2gOpen":false,"wifi2gName":"","wifi2gPwd":"","wifi2gOpenPwd":false,)"
         R"("wifi5gOpen":false,"wifi5gName":"","wifi5gPwd":"","wifi5gOpenPwd":false,"openDuration":0,"openTime":0}})"},
        {"deviceStatus", R"({"deviceStatus":{"linkStatus":0,"networkStatus":0,"upSpeed":0,"downSpeed":0}})"},
        {"mesh", R"({"mesh":{"open":false}})"},
        {"timeLed", R"({"timeLed":[]})"},
        {"ipv6Status", R"({"ipv6Status":{"open":0}})"},
        {"networkProtocol", R"({"networkProtocol":{"type":0}})"},
        {"wifi2gSeniorInfo",
         R"({"wifi2gSeniorInfo":{"encrypt":"","authmode":"","mode":"","txpower":0,"bandwidth":0,"channel":0}})"},
        {"wifi5gSeniorInfo",
         R"({"wifi5gSeniorInfo":{"encrypt":"","authmode":"","mode":"","txpower":0,"bandwidth":0,"channel":0}})"},
    };
    PropertyRig rig;
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "*"});
    for (const property_row *row : rows_with_get()) {
        ASSERT_TRUE(DOCUMENTS.contains(row->name)) << row->name;
        EXPECT_EQ(get(row->name), DOCUMENTS.at(row->name));
    }
}

} // namespace
