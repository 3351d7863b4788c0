// SPDX-License-Identifier: Apache-2.0
// The services that look into the connection, and the files that they read.
#include <filesystem>
#include <fstream>

#include "services/service_rig.h"

namespace {

using router::Fault;

// Writes a file; null removes it.
void put(const char *path, const char *content) {
    std::filesystem::remove(path);
    if (content) std::ofstream(path) << content;
}

TEST(StorageStatus, IsReadFromItsFirstBytes) {
    ServiceRig rig;
    struct StatusRow {
        const char *file, *nat, *connect, *logged;
    };
    const std::string late = std::string(120, ' ') + "nat_type=4 upnp=1 connect_status=1";
    for (const StatusRow &row :
         {StatusRow{"upnp=1\nnat_type=3\nconnect_status=1\n", R"({"natType": 3, "upnp": true})", "true",
                    nullptr},
          {"nat_type=x upnp= connect_status=", R"({"natType": 0, "upnp": false})", "false", nullptr},
          {late.c_str(), R"({"natType": 0, "upnp": false})", "false", nullptr},
          {"", R"({"natType": 0, "upnp": false})", "false", "read file:/aptmp/ecm.status fail"},
          {nullptr, R"({"natType": 0, "upnp": false})", "false", "open file:/aptmp/ecm.status fail"}}) {
        put("/aptmp/ecm.status", row.file);
        EXPECT_EQ(rig.call("nat", "x"), std::string("0: 200 nat ") + row.nat);
        EXPECT_TRUE(row.logged == nullptr || has_logged(row.logged));
        EXPECT_EQ(rig.call("connectCheck", nullptr),
                  std::string(R"(0: 200 connectCheck {"networkStatus":true,"hcdnRegister":)") + row.connect +
                      "}");
    }
    for (const char *status : {R"("connected")", R"("Connected ")", "1", "null"}) {
        rig.router.set_state("/vrop.waninfo/status", status);
        EXPECT_THAT(rig.call("connectCheck", nullptr), testing::HasSubstr(R"("networkStatus":false)"));
    }
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "vrop.waninfo"});
    EXPECT_THAT(rig.call("connectCheck", nullptr), testing::HasSubstr(R"("networkStatus":false)"));
}

TEST(PingTest, SaysWhatItMissesAndWhatTheDaemonRefuses) {
    check({
        {"pingTest"},
        {R"({"testUrl":"h"})", "-1: 400 {}", "", "times is not exist"},
        {R"({"times":3,"testUrl":""})", "-1: 400 {}", R"(vrop.diagnosis ping {"host":""})"},
        {R"({"times":3,"testUrl":"h.example"})", R"(0: 200 {"loss": 0, "relay": "9.334"})",
         R"(vrop.diagnosis ping {"host":"h.example"})", "loss:0 relay:9.334"},
        {R"({"times":3,"testUrl":"dead.example.com"})", R"(0: 200 {"loss": 100, "relay": ""})"},
    });
    ServiceRig rig;
    const std::pair<const char *, double> times[] = {{"3", 4}, {"0", 1}, {"-9", 1}, {"2147483648", 601}};
    for (const auto &[seconds, slept] : times) {
        rig.call("pingTest", (std::string(R"({"testUrl":"h","times":)") + seconds + "}").c_str());
        EXPECT_EQ(ServiceRig::slept(), slept) << seconds;
    }
}

// What the daemon left is there once the pause is over, whichever of the two files that is.
TEST(PingTest, ReadsWhateverTheFileHolds) {
    ServiceRig rig;
    const std::string endless(5000, '/');
    const std::pair<std::string, const char *> files[] = {
        {"1 sent, 0 received, 25% packet loss\nround-trip min/avg/max = 1.5/2.5/3.5 ms\n, 7% loss\n",
         R"(0: 200 pingTest {"loss": 25, "relay": "2.5"})"},
        {"PING loss.example: data\n4 packets 33% loss\n", R"(0: 200 pingTest {"loss": 100, "relay": ""})"},
        {"a, 50 packet loss\nb,\t 12 % loss ,no\n", R"(0: 200 pingTest {"loss": 100, "relay": ""})"},
        {"x, 99999999% loss\nround-trip 1/2/3 ms\n= 4/5/6\n",
         R"(0: 200 pingTest {"loss": 999999, "relay": ""})"},
        {"round-trip = a = 1/\"\\\x01\xff%s/3 ms", R"(0: 200 pingTest {"loss": 100, "relay": "\"\\\u0001)"
                                                   "\xef\xbf\xbd"
                                                   R"(%s"})"},
        {"round-trip = 1/" + endless, R"(0: 200 pingTest {"loss": 100, "relay": ""})"},
        {"", R"(0: 200 pingTest {"loss": 100, "relay": ""})"},
    };
    for (const char *path : {"/aptmp/pingrt", "/tmp/pingrt"})
        for (const auto &[file, answer] : files) {
            moving_clock::on_pause([&](moving_clock::Millis) {
                put("/aptmp/pingrt", nullptr);
                put(path, file.c_str());
            });
            EXPECT_EQ(rig.call("pingTest", R"({"times":1,"testUrl":"h"})"), answer) << file.substr(0, 80);
        }
    moving_clock::on_pause([](moving_clock::Millis) {
        put("/aptmp/pingrt", nullptr);
        put("/tmp/pingrt", nullptr);
    });
    EXPECT_EQ(rig.call("pingTest", R"({"times":1,"testUrl":"h"})"), "-1: 400 pingTest {}");
    moving_clock::on_pause([](moving_clock::Millis) {
        put("/aptmp/pingrt", nullptr);
        std::filesystem::create_symlink("/dev/zero", "/aptmp/pingrt");
    });
    EXPECT_EQ(rig.call("pingTest", R"({"times":1,"testUrl":"h"})"), "-1: 400 pingTest {}");
    EXPECT_TRUE(has_logged("open file:/aptmp/pingrt fail"));
}

TEST(NetworkCheck, TellsOfSlowNamesAndOfAnIpv6ThatIsDown) {
    const auto answer = [](int ipv6, int dns) {
        return R"(0: 200 {"isIpv6": )" + std::to_string(ipv6) + R"(, "dnsStatus": )" + std::to_string(dns) +
               "}";
    };
    const std::string good = answer(0, 0), slow = answer(0, 1), down = answer(1, 0);
    const char *const defaults = R"(vrop.diagnosis ping {"host":"ping.example.com","num":4})";
    const char *const far = R"({"sim":{"ping":{"times":"150.2/160/170"}}})";
    check({
        {"networkCheck"},
        {"", good.c_str(), defaults, "test_url:ping.example.com timeout:100"},
        {"{}", slow.c_str(), defaults, "networkCheck_call ...", far},
        {R"({"testUrl":"h","dnsTimeout":151})", good.c_str(), R"(vrop.diagnosis ping {"host":"h","num":4})",
         "test_url:h timeout:151", far},
        {"{}",
         good.c_str(),
         defaults,
         "get dns delay fail",
         far,
         {.kind = Fault::Kind::Result, .object = "vrop.diagnosis", .value = 1}},
        {"{}", down.c_str(), nullptr, "network_type:1", R"({"vrop.waninfo":{"protocoltype":"IPv4/IPv6"}})"},
        {"{}", good.c_str(), nullptr, "network_type:1",
         R"({"vrop.waninfo":{"protocoltype":"IPv6","status6":"Connected"}})"},
        {"{}", good.c_str(), nullptr, nullptr,
         R"({"vrop.waninfo":{"protocoltype":"IPv6","workmode":"BRIDGE"}})"},
    });
    ServiceRig rig(far);
    moving_clock::on_pause([](moving_clock::Millis) {
        put("/aptmp/pingrt", nullptr);
        put("/tmp/pingrt", "round-trip min/avg/max = 150/160/170 ms\n");
    });
    EXPECT_EQ(rig.call("networkCheck", "{}"), R"(0: 200 networkCheck {"isIpv6": 0, "dnsStatus": 0})");
    EXPECT_EQ(ServiceRig::slept(), 2);
}

} // namespace
