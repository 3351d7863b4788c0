// SPDX-License-Identifier: Apache-2.0
// What each operation does when one of its calls is refused, not answered, or answered without what was asked
// for. The calls are those of a good run; each of them is then spoiled in turn.
#include <algorithm>
#include <map>
#include <set>

#include <gmock/gmock.h>

#include "properties/property_rig.h"
#include "sim/router/faults.h"

namespace {

using router::Fault;
using testing::Contains;
using testing::UnorderedElementsAreArray;

// "object method" of each call.
Texts names_of(const Texts &calls) {
    Texts names;
    for (const std::string &line : calls)
        names.push_back(line.substr(0, line.find(' ', line.find(' ') + 1)));
    return names;
}

// Refused, no data; answered without the member, with an empty one, with one of another type.
Texts faults_for(const std::string &call) {
    const std::string object = call.substr(0, call.find(' '));
    return {"result=2 " + call, "status=7 " + call, "reply={} " + call,
            R"(reply={"result":0,")" + object + R"(":{}} )" + call,
            R"(reply={"result":[],")" + object + R"(":"text"} )" + call};
}

struct Outcome {
    int result = 0;
    Texts missing = {};           // calls of the good run that are not made then
    const char *logged = nullptr; // or null
};
struct Operation {
    const char *property;
    const char *home;                      // its get gives the request, which is made to the usual home
    std::map<std::string, Outcome> spoilt; // by call; what stands in no row changes nothing else
};

// What is not made when a guest network does not follow.
const Texts GUEST_2G = {"vrop.wifi.1.ap.modify getbyindex", "vrop.wifi.1.ap.modify set"};
const Texts GUEST_5G = {"vrop.wifi.2.ap.modify getbyindex", "vrop.wifi.2.ap.modify set"};
const Texts GUESTS = {GUEST_2G[0], GUEST_2G[1], GUEST_5G[0], GUEST_5G[1]};

// clang-format off
const std::vector<Operation> OPERATIONS = {
    {"wifiInfo", "",
     {{"vrop.webwifisimple get", {0, GUESTS}},
      {GUEST_2G[0], {0, GUEST_2G, "get 2.4g visitor info fail"}},
      {GUEST_5G[0], {0, GUEST_5G, "get 5g wifi info fail"}},
      {"vrop.webwifi1adv set", {0, {}, "set 2.4G  encrytion and hidden fail"}},
      {"vrop.webwifi2adv set", {0, {}, "set 5G  encrytion and hidden fail"}},
      {"vrop.webwifisimple set", {-1, {}, "set 2.4G and 5G wifi fail"}}}},
    {"wifiInfo", R"({"vrop.webwifisimple":{"wifidual":1}})",
     {{"vrop.webwifisimple get", {0, GUESTS}},
      {GUEST_2G[0], {0, GUEST_2G}},
      {GUEST_5G[0], {0, GUEST_5G}},
      {"vrop.webwifi1adv get", {0, {"vrop.webwifi2adv set"}}},
      {"vrop.webwifisimple set", {-1, {}, "set bandSteeringConfig fail"}}}},
    {"networkInfo", R"({"vrop.waninfo":{"workmode":"BRIDGE"}})", {{"vrop.waninfo set", {0, {}, "set bridge way fail"}}}},
    {"networkInfo", R"({"vrop.waninfo":{"networktype":"DHCP"}})", {{"vrop.waninfo set", {0, {}, "set dhcp way fail"}}}},
    {"networkInfo", R"({"vrop.waninfo":{"networktype":"PPPoE"}})", {{"vrop.waninfo set", {0, {}, "set ppoe way fail"}}}},
    {"networkInfo", R"({"vrop.waninfo":{"networktype":"STATIC"}})", {{"vrop.waninfo set", {0, {}, "set dhcp way fail"}}}},
    {"networkInfo", R"({"vrop.waninfo":{"workmode":"APCLIENT"},"vrop.wifi.1.apclient":{"ssid":"Next door"}})",
     {{"vrop.wifi.1.apclient set", {0, {}, "set relay way fail"}}}},
    {"visitorsWifi", "",
     {{GUEST_2G[1], {0, {}, "set 2.4G visitor wifi fail"}},
      {GUEST_5G[1], {0, {}, "set 5G visitor wifi fail"}},
      {"vrop.wifi.guestwificontrol set", {-1, {}, "set visitor wifi fail"}}}},
    {"mesh", "", {{"vrop.mesh set", {-1, {}, "set mesh open fail"}}}},
    {"ledStatus", "", {{"vrop.ledswitch set", {-1}}}},
    {"ipv6Status", "", {{"vrop.waninfo set", {-1, {}, "modify ipv6 status fail"}}}},
    {"networkProtocol", "", {{"vrop.waninfo set", {-1, {}, "change networkProtocol fail"}}}},
    {"wifi2gSeniorInfo", "", {{"vrop.webwifi1adv set", {-1, {}, "set wifi senior config fail"}}}},
    {"wifi5gSeniorInfo", "", {{"vrop.webwifi2adv set", {-1, {}, "set wifi senior config fail"}}}},
    {"timeReboot", WITH_TASKS,
     {{"vrop.timer list", {0, {"vrop.timer.modify set"}}},
      {"vrop.timer.modify set", {0, {}, "set timeReboot config fail"}}}},
    {"timeLed", WITH_TASKS,
     {{"vrop.timer list", {0, {"vrop.timer add"}}},
      {"vrop.timer add", {0, {}, "apply entry 0 fail"}}}},
};
// clang-format on

void spoil(const Operation &operation, const std::string &request, const std::string &call,
           const Texts &good) {
    for (const std::string &text : faults_for(call)) {
        SCOPED_TRACE(text);
        const Fault fault = router::parse_fault(text);
        // of what a write answers only a "result" that is not 0 counts
        const bool reads = fault.method.starts_with("get") || fault.method == "list";
        const auto found = operation.spoilt.find(call);
        const bool counts = found != operation.spoilt.end() && (reads || fault.kind != Fault::Kind::Reply);
        const Outcome expected = counts ? found->second : Outcome{};
        PropertyRig rig;
        rig.router.add_fault(fault);
        EXPECT_EQ(set(operation.property, request), expected.result);
        Texts names = names_of(rig.calls());
        names.insert(names.end(), expected.missing.begin(), expected.missing.end());
        EXPECT_THAT(names, UnorderedElementsAreArray(good));
        if (expected.logged != nullptr && fault.reply == "{}") {
            EXPECT_TRUE(has_logged(expected.logged)) << expected.logged;
        }
    }
}

TEST(SpoiltCalls, OfSets) {
    for (const Operation &operation : OPERATIONS) {
        const std::string request = (PropertyRig(operation.home), get(operation.property));
        SCOPED_TRACE(request);
        Texts good;
        {
            PropertyRig rig;
            EXPECT_EQ(set(operation.property, request), 0);
            good = names_of(rig.calls());
            for (const auto &[call, outcome] : operation.spoilt) {
                EXPECT_THAT(good, Contains(call));
                EXPECT_FALSE(outcome.logged != nullptr && has_logged(outcome.logged)) << outcome.logged;
            }
        }
        for (const std::string &call : std::set<std::string>(good.begin(), good.end()))
            spoil(operation, request, call, good);
    }
}

// A get answers from what it read before, or from zeroes; only the LED switch needs its daemon.
TEST(SpoiltCalls, OfGets) {
    const Texts keeping = {"deviceInfo", "deviceStatus", "networkInfo", "visitorsWifi", "mesh"};
    for (const property_row *row : rows_with(&property_row::get)) {
        const std::string name = row->name;
        SCOPED_TRACE(name);
        PropertyRig rig;
        rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "*"});
        const std::string fresh = get(name);
        EXPECT_TRUE(name == "ledStatus" ? fresh == "-1" : fresh.starts_with("{\"" + name + "\":")) << fresh;
        rig.router.clear_faults();
        rig.forget();
        const std::string good = get(name);
        for (const std::string &call : names_of(rig.calls())) {
            for (const std::string &text : faults_for(call)) {
                SCOPED_TRACE(text);
                const Fault fault = router::parse_fault(text);
                rig.router.add_fault(fault);
                const std::string document = get(name);
                const bool answered = fault.reply != "{}";
                if (name == "ledStatus" && !answered) {
                    EXPECT_EQ(document, "-1");
                    EXPECT_EQ(row->report(), -1);
                    EXPECT_THAT(recording_sdk::calls(), testing::IsEmpty());
                    EXPECT_TRUE(has_logged("get led status fail"));
                } else if (!answered && std::count(keeping.begin(), keeping.end(), name) > 0) {
                    EXPECT_EQ(document, good);
                } else {
                    EXPECT_TRUE(document.starts_with("{\"" + name + "\":")) << document;
                }
                rig.router.clear_faults();
            }
        }
    }
}

} // namespace
