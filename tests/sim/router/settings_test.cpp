// SPDX-License-Identifier: Apache-2.0
// What sets change wherever it shows, and what is refused.
#include "sim/router/steps.h"

namespace {

// Each on what the ones before it left. Properties and client devices are set in the tests of the agent.
TEST(Setting, IsSeenWhereverItShows) {
    const std::vector<Step> steps = {
        {R"(vrop.webwifisimple set {"wifi24ssid":"Office","wifi24apenable":0,"wifi5apenable":0})",
         R"(/vrop.wifi.1.ap/0/ssid="Office" /vrop.webwifisimple/wifiswitch=0 /vrop.laninfo/5/ssid="Office")"},
        {R"(vrop.wifi set {"use2_4gpwd":1})", "/vrop.webwifisimple/use2_4gpwd=1"},
        {R"(vrop.webwifi2adv set {"channel":149,"noteffectflag":1})",
         "/vrop.webwifi2adv/currentchannel=149 /vrop.webwifi2adv/noteffectflag="},
        {R"(vrop.webwifi2adv set {"channel":0})", "/vrop.webwifi2adv/currentchannel=149"},
        // a network may be protected first and given its key after that, as the advanced page does it
        {R"(vrop.webwifi1adv set {"authmode":"NONE"})", R"(/vrop.wifi.1.ap/0/authmode="NONE")"},
        {R"(vrop.webwifisimple set {"wifi24key":""})", R"(/vrop.wifi.1.ap/0/key="")"},
        {R"(vrop.webwifi1adv set {"authmode":"WPA3-SAE"})", R"(/vrop.wifi.1.ap/0/authmode="WPA3-SAE")"},
        {R"(vrop.wifi.1.apclient set {"enable":1,"ssid":"Up","key":"upstream1","authmode":"WPA2-PSK"})"},
        {R"(vrop.wifi.2.apclient set {"enable":1,"ssid":"Up","key":"upstream1","authmode":"WPA2-PSK"})",
         R"(/vrop.wifi.1.apclient/enable=0 /vrop.waninfo/workmode="APCLIENT")"},
        {R"(vrop.waninfo set {"networktype":"STATIC","ipaddr":"10.0.0.2","dns":"10.0.0.1,"})",
         R"(/vrop.homewebinfo/ipaddr="10.0.0.2" /vrop.waninfo/workmode="ROUTE" /vrop.wifi.2.apclient/enable=0)"},
    };
    router::Router router;
    play(router, steps);
    const char *task = R"(vrop.timer add {"action":"ToReboot","timeoffset":0,"enable":1,"week":1})";
    play(router, std::vector<Step>(14, {task}));
    EXPECT_THAT(call(router, task), testing::HasSubstr("vrop.timer list is full"));
    router.set_state("/vrop.ftinfo/sn", R"("S1")");
    EXPECT_THAT(router.call("vrop.fota", "get"), testing::HasSubstr(R"("sn":"S1")"));
}

TEST(Setting, ThatIsRefusedChangesNothing) {
    const std::string bad = "parameter format incorrect: ", missing = "required parameter: ";
    const std::pair<const char *, std::string> rows[] = {
        {R"(vrop.ledswitch set {"status":1})", bad + "'status'"},
        {R"(vrop.ledswitch set {})", missing + "'status'"},
        {R"(vrop.ledswitch set {"status":"on","color":"red"})", "unrecognized parameter: 'color'"},
        {R"(vrop.webwifisimple set {})", "no parameter"},
        {R"(vrop.webwifisimple set {"wifi24ssid":""})", bad + "'wifi24ssid'"},
        {R"(vrop.webwifisimple set {"wifi5ssid":"123456789012345678901234567890123"})", bad + "'wifi5ssid'"},
        {R"(vrop.webwifisimple set {"wifi24ssid":"Office","wifi5key":"1234567"})", bad + "'wifi5key'"},
        {R"(vrop.webwifi1adv set {"channel":14})", bad + "'channel'"},
        {R"(vrop.webwifi2adv set {"channel":37})", bad + "'channel'"},
        {R"(vrop.webwifi1adv set {"txpower":101})", bad + "'txpower'"},
        {R"(vrop.wifi.1.ap.modify set {"index":2,"authmode":"WPA2-PSK","key":""})", bad + "'key'"},
        {R"(vrop.wifi.1.ap.modify set {"index":3,"enable":1})", "vrop.wifi.1.ap.modify.3 not found"},
        {R"(vrop.waninfo set {"networktype":"STATIC","subnetmask":"255.0.255.0"})", bad + "'subnetmask'"},
        {R"(vrop.waninfo set {"dnsenable":1,"dns":"8.8.8"})", bad + "'dns'"},
        {R"(vrop.timer add {"action":"ToReboot","timeoffset":86400})", bad + "'timeoffset'"},
        {R"(vrop.timer.modify set {"action":"ToLedMode","taskid":1,"enable":1})", "vrop.timer.1 not found"},
        {R"(vrop.parent.control setdev {"mac":"02a0c9000001","hostname":"PC","disconnect":1})",
         "vrop.parent.control.02a0c9000001 not found"},
        {R"(vrop.mesh connect)", "mesh is off"},
        {R"(vrop.laninfo.sta set {"mac":"02a0c9","devname":"x"})", bad + "'mac'"},
        {R"(vrop upgrade {"downurl":"/tmp/nothing.img","isreboot":1})", "no image /tmp/nothing.img"},
        {R"(sim wan {"status":"up"})", "the cable is out"},
    };
    router::Router router;
    router.cable(false);
    const std::string before = router.state();
    for (const auto &[line, reason] : rows) {
        EXPECT_EQ(call(router, line), R"({"result":"1","failreason":")" + reason + "\"}") << line;
        EXPECT_EQ(router.state(), before) << line;
    }
}

} // namespace
