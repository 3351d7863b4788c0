// SPDX-License-Identifier: Apache-2.0
// The shape of each kind of reply, and that what is published is what is answered.
#include <gtest/gtest.h>

#include "sim/router/bus_caller.h"
#include "sim/router/json.h"
#include "sim/router/world.h"

namespace {

// The members of a reply, as "name:type" texts in a row.
std::string shape(const std::string &reply) {
    router::State tree(reply);
    std::string text;
    json_object_object_foreach(tree.root(), name, value) {
        text += (text.empty() ? "" : " ") + std::string(name) + ":" +
                json_type_to_name(json_object_get_type(value));
    }
    return text;
}

struct ShapeRow {
    const char *object, *method, *arguments, *shape;
};

const ShapeRow SHAPES[] = {
    {"vrop.ftinfo", "get", "{}", "vrop.ftinfo:object"},
    {"vrop.fota", "get", "{}", "vrop.fota:object"},
    {"vrop.laninfo", "list", "{}", "vrop.laninfo:array"},
    {"vrop.timer", "list", "{}", "vrop.timer:array"},
    {"vrop.wifi.1.ap", "list", "{}", "vrop.wifi.1.ap:array"},
    {"vrop.parent.urlcontrol", "list", "{}", "vrop.parent.urlcontrol:array"},
    {"vrop.parent.timecontrol", "list", "{}", "vrop.parent.timecontrol:array"},
    {"vrop.parent.control", "list", "{}", "vrop.parent.control:object"},
    {"vrop.firewall.filter", "get", "{}", "vrop.firewall.filter:object"},
    {"vrop.laninfo.sta", "getbymac", R"({"mac":"02A0C9000001"})", "result:int vrop.laninfo.sta:object"},
    {"vrop.laninfo.sta", "getbymac", R"({"mac":"02a0c9999999"})", "result:int"},
    {"vrop.parent.control", "getbymac", R"({"mac":"02a0c9000005"})", "result:int vrop.parent.control:object"},
    {"vrop.parent.control", "getbymac", R"({"mac":"02a0c9000001"})", "result:int"},
    {"vrop.wifi.2.ap.modify", "getbyindex", R"({"index":2})", "result:int vrop.wifi.2.ap.modify:object"},
    {"vrop.wifi.2.ap.modify", "getbyindex", R"({"index":9})", "result:int"},
    {"vrop.waninfo", "getwanrate", "{}", "vrop.waninfo.wanrate:object"},
    {"vrop.wifi.1", "getchannelscore", "{}", "vrop.wifi.getchannelscore:array"},
    {"vrop.wifi.2", "getinterference", "{}", "vrop.wifi.2:object"},
    {"vrop.devinfo", "getaccount", "{}", "vrop.devinfo:object"},
    {"vrop.ledswitch", "set", R"({"status":"off"})", "result:string"},
    {"vrop.ledswitch", "set", R"({"status":"dim"})", "result:string failreason:string"},
    {"vrop.timer", "delete", R"({"action":"ToReboot","taskid":-1111})", "result:string"},
};

TEST(Reply, HasTheShapeOfItsKind) {
    Home home;
    BusCaller client;
    for (const ShapeRow &row : SHAPES) {
        SCOPED_TRACE(std::string(row.object) + " " + row.method + " " + row.arguments);
        const std::string reply = client.call(row.object, row.method, row.arguments);
        ASSERT_EQ(client.status, 0);
        EXPECT_EQ(shape(reply), row.shape);
    }
    EXPECT_EQ(shape(at(client.call("vrop.parent.control", "list"), "/vrop.parent.control")), "device:array");
    EXPECT_EQ(client.call_for("vrop.laninfo.sta", "getbymac", "/result", R"({"mac":"02a0c9999999"})"), "1");
    EXPECT_EQ(client.call_for("vrop.wifi.1", "getchannelscore", "/vrop.wifi.getchannelscore/0"),
              R"({"channel":1,"score":62})");
}

// Every row of the table is on the bus and answers a call without arguments with data, if only a refusal.
TEST(Reply, ComesFromEveryMethodThatIsListed) {
    Home home;
    BusCaller client;
    for (const router::Method &row : router::all_methods()) {
        SCOPED_TRACE(std::string(row.object) + " " + row.name);
        if (std::string(row.object) == "vrop" || std::string(row.object) == "sim")
            continue; // they end other calls
        EXPECT_NE(client.call(row.object, row.name), "");
        EXPECT_EQ(client.status, 0);
    }
    EXPECT_EQ(client.call("vrop.ledswitch", "flash"), "");
    EXPECT_EQ(client.status, 3);
    EXPECT_EQ(client.call("vrop.nothing", "get"), "");
    EXPECT_EQ(client.status, 4);
}

TEST(Reply, ShowsAFactThroughEveryObjectThatHasIt) {
    Home home;
    home.router.set_state("/vrop.ftinfo/sn", R"("S1")");
    home.router.set_state("/vrop.webwifisimple/wifi5ssid", R"("Attic")");
    home.router.set_state("/vrop.fota/version", R"("V9")");
    BusCaller client;
    EXPECT_EQ(client.call_for("vrop.fota", "get", "/vrop.fota/sn"), R"("S1")");
    EXPECT_EQ(client.call_for("vrop.devinfo", "get", "/vrop.devinfo/sn"), R"("S1")");
    EXPECT_EQ(client.call_for("vrop.wifi.2.ap", "list", "/vrop.wifi.2.ap/0/ssid"), R"("Attic")");
    EXPECT_EQ(client.call_for("vrop.ftinfo", "get", "/vrop.ftinfo/iswversion"), R"("V9")");
    home.router.erase_state("/vrop.webwifisimple/wifi5ssid");
    EXPECT_EQ(client.call_for("vrop.webwifisimple", "get", "/vrop.webwifisimple/wifi5ssid"), "");
}

} // namespace
