// SPDX-License-Identifier: Apache-2.0
// The document of all client devices: each member, what a document is built of, and its reports.
#include "devices/device_document.h"

#include <fstream>

#include <gmock/gmock.h>

#include "core/report_gate.h"
#include "core/text.h"
#include "devices/ap_devices.h"
#include "devices/device_lookups.h"
#include "devices/station_rates.h"
#include "sim/router/json.h"
#include "support/recording_sdk.h"
#include "support/router_rig.h"
#include "tests/devices/lists.h"

namespace {

using router::Fault;
using router::json_text;
using testing::ElementsAre;
using testing::Not;

constexpr char DEVICE[] = "02a0c9000005"; // the home's only one under parental control

class Document : public testing::Test {
  protected:
    // The document's devices as compact JSON.
    std::string document(int mode = DOCUMENT_PROPERTY) {
        const JsonRoot root(get_apDevice_config(mode));
        return json_text(router::member(root.get(), "apDevices"));
    }
    std::string document_of(const std::string &stations) {
        rig.router.set_state("/vrop.laninfo", stations);
        return document();
    }
    static std::string with_mac(size_t number, const std::string &members) {
        return format_text<24>(R"({"mac":"02a0c9%06zx")", number).text +
               (members.empty() ? "" : "," + members) + "}";
    }
    RouterRig rig;
};

// What the document says of a station that is not under parental control, apart from its own members.
std::string plain(const std::string &mac, const std::string &members) {
    return R"({"mac":")" + mac + R"(","parentalEnable":false,)" + members +
           R"("parentFlag":0,"timeControlEnable":false,"webControlEnable":false,"onlineNotice":true})";
}

TEST_F(Document, ShowsALinkAsTheStationHasIt) {
    struct Row {
        const char *station, *shown;
    };
    const Row rows[] = {
        {R"("radio":"0")", R"("joinWay":0,"blackEnable":false,)"},
        {R"("radio":"mesh","ssid":"Home_Guest")", R"("joinWay":3,"blackEnable":false,)"},
        {R"("radio":"2.4G","ssid":"Home_Guest")", R"("joinWay":1,"guestEnable":true,"blackEnable":false,)"},
        {R"("radio":"5G","ssid":"Home_Guest")", R"("joinWay":2,"guestEnable":false,"blackEnable":false,)"},
        {R"("radio":"5G","ssid":"Home_5G_Guest")", R"("joinWay":2,"guestEnable":true,"blackEnable":false,)"},
        {R"("radio":"6G")", R"("blackEnable":false,)"},
        {R"("active":0,"uptime":7)", R"("onlineStatus":0,"blackEnable":false,"onlineTime":7,)"},
        {R"("devname":"","hostname":"own")", R"("name":"own","blackEnable":false,)"},
        {R"("hostname":"own")", R"("blackEnable":false,)"},
        {R"("limitrateswitch":0,"usbandwidth":5)", R"("blackEnable":false,"limitSpeed":{"open":false},)"},
        {R"("limitrateswitch":1,"usbandwidth":5,"dsbandwidth":6)",
         R"("blackEnable":false,"limitSpeed":{"open":true,"upSpeed":5,"downSpeed":6},)"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(document_of("[" + with_mac(1, row.station) + "]"),
                  "[" + plain("02a0c9000001", row.shown) + "]");
    EXPECT_THAT(
        document_of(R"([{"mac":"02a0c90000ff","ipaddr":"192.0.2.9","statype":"pc"}])"),
        testing::AllOf(testing::HasSubstr(R"("ip":"192.0.2.9","parentalEnable":false,"blackEnable":true)"),
                       testing::HasSubstr(R"("devType":"pc","onlineNotice":true)")));
}

TEST_F(Document, ShowsWhatParentalControlHolds) {
    std::ofstream("/aptmp/client_runTime.log") << R"([{"mac":"02A0C9000005","onlineNotice":0}])";
    rig.router.set_state("/vrop.parent.control/device/0/disconnect", "1");
    rig.router.set_state("/vrop.parent.control/device/0/disconnecttime", "1800");
    rig.router.set_state("/vrop.parent.control/device/0/disconnectsettime", "1714550400");
    const std::string supervised =
        R"({"mac":"02a0c9000005","parentalEnable":true,"blackEnable":false,"parentFlag":1,)"
        R"("todayOnlineTime":5405,"yesterdayOnlineTime":8100,"weekOnlineTime":38700,"parentalTimeControl":[)"
        R"({"timeFrame":"08:30-21:05","daysOfWeek":[0,0,0,0,0,1,1],"open":true},)"
        R"({"timeFrame":"07:00-19:30","daysOfWeek":[1,1,1,1,1,0,0],"open":true}],)"
        R"("parentalWebControl":{"sites":["games.example.com"],"controlPolicy":0,)"
        R"("urls":[{"open":true,"url":"games.example.com"}]},)"
        R"("ParentalGameControl":{"urls":[{"open":true,"appname":"Blocks"}]},"ParentalPayControl":{"urls":[]},)"
        R"("ParentalShopControl":{"urls":[]},"ParentalSocialControl":{"urls":[{"open":false,"appname":"Chatter"}]},)"
        R"("ParentalVideoControl":{"urls":[]},"ParentalInstallControl":{"urls":[]},)"
        R"("timeControlEnable":true,"webControlEnable":true,"onlineNotice":false,)"
        R"("disconnect":3,"disconnectOpenTime":1714550400})";
    std::string follower = plain("02a0c9000002", R"("blackEnable":false,)");
    for (const char *name : {"\"timeControlEnable\":", "\"webControlEnable\":"})
        follower.replace(follower.find(name) + strlen(name), 5, "true"); // as of the one before
    const std::string first = plain("02a0c9000001", R"("blackEnable":false,)");
    const std::string stations = "[" + with_mac(1, "") + "," + with_mac(5, "") + "," + with_mac(2, "") + "]";
    EXPECT_EQ(document_of(stations), "[" + first + "," + supervised + "," + follower + "]");
    for (const int mode : {DOCUMENT_PROPERTY, DOCUMENT_TIMED})
        EXPECT_EQ(document(mode), "[" + first + "," + supervised + "," + follower + "]")
            << "each document starts anew";

    rig.router.set_state("/vrop.parent.urlcontrol/0/filterType", R"("grey")");
    rig.router.set_state("/vrop.parent.urlcontrol/0/list", "[]");
    rig.router.set_state("/vrop.parent.timecontrol", "[]");
    EXPECT_THAT(document(), Not(testing::AnyOf(testing::HasSubstr("parentalWebControl"),
                                               testing::HasSubstr("parentalTimeControl"))));
}

TEST_F(Document, HoldsTheFirst128StationsWhateverTheirNumber) {
    for (const size_t count : {0, 1, 128, 129}) {
        const std::string stations = listed(count, [](size_t i) { return with_mac(i, ""); });
        const JsonRoot devices = router::parse_json(document_of("[" + stations + "]"));
        EXPECT_EQ(router::length_of(devices.get()), std::min<size_t>(count, 128));
    }
    EXPECT_EQ(document_of(R"([{"mac":""},{},5,null,{"mac":"123456789012345678"}])"),
              "[" + plain("123456789012345", R"("blackEnable":false,)") + "]");
    EXPECT_EQ(document_of("5"), "[]");
    rig.router.add_fault({.kind = Fault::Kind::Absent});
    EXPECT_EQ(document(), "[]");
}

TEST_F(Document, AsksForEachListOnceAndForEachDeviceAtMostTwice) {
    const std::string stations = listed(128, [](size_t i) {
        return with_mac(i, i % 2 ? R"("radio":"5G","ssid":"x","limitrateswitch":1)"
                                 : R"("radio":"2.4G","ssid":"x","limitrateswitch":0)");
    });
    const std::string devices = listed(40, [](size_t i) { return with_mac(i, R"("funcenable":1)"); });
    rig.router.set_state("/vrop.parent.control/device", "[" + devices + "]");
    document_of("[" + stations + "]");
    const auto count = [this](const char *object, const char *method) {
        return rig.router.calls(object, method).size();
    };
    EXPECT_EQ(count("*", "list"), 6U);
    EXPECT_EQ(count("*", "get"), 1U);
    EXPECT_EQ(count("vrop.parent.control", "getbymac"), 128U);
    EXPECT_EQ(count("vrop.laninfo.sta", "getbymac"), 64U); // of the limited ones
    EXPECT_EQ(rig.router.calls().size(), 7U + 128U + 64U);
}

TEST_F(Document, OfAMeshHoldsItsStationsInItsOrder) {
    const JsonRoot asked = router::parse_json(
        R"([{"mac":"02A0C9000003"},{"mac":"02a0c9000099"},{},7,{"mac":"02a0c9000001"},{"mac":"02a0c9000003"}])");
    const JsonRoot devices(get_meshApDevice_config(asked.get()));
    std::vector<std::string> macs;
    for (size_t i = 0; i < router::length_of(devices.get()); i++) {
        macs.push_back(router::text_of(router::element(devices.get(), i), "mac"));
        EXPECT_TRUE(router::member(router::element(devices.get(), i), "onlineTime"));
    }
    EXPECT_THAT(macs, ElementsAre("02a0c9000003", "02a0c9000001", "02a0c9000003"));
    const JsonRoot many(json_object_new_array());
    for (int i = 0; i < 129; i++)
        json_object_array_add(many.get(), json_object_get(router::element(asked.get(), 0)));
    EXPECT_EQ(router::length_of(JsonRoot(get_meshApDevice_config(many.get())).get()), 128U);
}

TEST_F(Document, IsReportedWhenItHasChangedAndNobodySetsIt) {
    const auto posts = [] { return recording_sdk::calls_of("TEBRA_SDK_PostProperty").size(); };
    EXPECT_EQ(apDevices_report(), 0);
    EXPECT_EQ(posts(), 1U);
    rig.router.elapse(30); // an uptime alone is no change
    EXPECT_EQ(apDevices_report(), 0);
    EXPECT_EQ(posts(), 1U);
    rig.router.station("02a0c9000004", "");
    set_flag = 1;
    EXPECT_EQ(apDevices_report(), 0);
    EXPECT_EQ(apDevices_event_report(), 0);
    EXPECT_TRUE(has_logged("APP is setting, wait again!"));
    EXPECT_EQ(recording_sdk::calls().size(), 1U);
    set_flag = 0;
    EXPECT_EQ(apDevices_report(), 0);
    EXPECT_EQ(posts(), 2U);

    const std::string stations =
        listed(128, [](size_t i) { return with_mac(i, R"("devname":"a rather long name of a device")"); });
    rig.router.set_state("/vrop.laninfo", "[" + stations + "]");
    EXPECT_EQ(apDevices_event_report(), 0);
    const recording_sdk::Call event = recording_sdk::calls_of("TEBRA_SDK_PostEvent").at(0);
    EXPECT_EQ(event.arguments.at(0), "allDevicesReport");
    EXPECT_EQ(event.arguments.at(1).size(), 16383U);
}

TEST_F(Document, IsMadeOfLookupsThatAnswerByThemselves) {
    for (const auto &[seconds, expected] : {std::pair{600, 2}, {1800, 3}, {3600, 4}, {60, 9}}) {
        rig.router.set_state("/vrop.parent.control/device/0/disconnecttime", std::to_string(seconds));
        for (const int disconnect : {9, 0, -1}) {
            rig.router.set_state("/vrop.parent.control/device/0/disconnect", std::to_string(disconnect));
            int code = -1;
            long time = -1;
            EXPECT_EQ(get_disconnectInfo(DEVICE, &code, &time), 0);
            EXPECT_EQ(code, disconnect > 0 ? expected : 0);
        }
    }
}

TEST_F(Document, CountsAreThoseOfTheList) {
    EXPECT_EQ(get_alldevice_num(), 10);
    EXPECT_EQ(get_device_num(), 9);
}

} // namespace
