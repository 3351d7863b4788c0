// SPDX-License-Identifier: Apache-2.0
// Formatting a disk, and capturing packets: which requests are carried out, and how the work ends.
#include <atomic>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <set>
#include <thread>

#include "core/registration.h"
#include "services/capture.h"
#include "services/packet_file.h"
#include "services/remote_capture.h"
#include "services/service_rig.h"
#include "services/url_file.h"
#include "sim/router/hardware.h"
#include "support/event_catcher.h"
#include "support/helper_stub.h"

namespace {

using router::Fault;
using testing::ElementsAre;
namespace fs = std::filesystem;

constexpr char STICK[] = R"({"diskPath":"/mnt/usb"})";
const std::string BEGUN = "0: 200 outdiskFormat {}", REFUSED = "-1: 400 outdiskFormat {}";

std::string outcome(int result) {
    return R"({"action": "outFormatFeedback", "result": )" + std::to_string(result) + "}";
}

TEST(OutdiskFormat, EmptiesAListedDiskAndTellsTheOutcome) {
    ServiceRig rig(R"({"sim":{"formattime":0}})");
    EventCatcher events(256);
    ASSERT_TRUE(router::make_hardware());
    get_qvtkRegister_info(&register_config);
    auto format = [&](const std::string &state) {
        std::ofstream("/mnt/usb/file") << "x";
        EXPECT_EQ(rig.call("outdiskFormat", STICK), BEGUN);
        EXPECT_TRUE(wait_for_log("format disk:/mnt/usb " + state));
        std::vector<std::string> told;
        for (int look = 0; look < 1000 && told.empty(); look++) {
            poll(nullptr, 0, 10);
            told = events.take();
        }
        return told;
    };
    moving_clock::on_pause(
        [&](moving_clock::Millis) { EXPECT_TRUE(rig.router.wait_for_state("/vrop.ecm/formatstate", "0")); });
    EXPECT_THAT(format("ok"), ElementsAre(outcome(0)));
    moving_clock::on_pause({});
    EXPECT_TRUE(fs::is_empty("/mnt/usb"));
    const Fault faults[] = {
        {.kind = Fault::Kind::Result, .object = "vrop.ecm", .method = "format", .value = 1},
        {.kind = Fault::Kind::Reply, .object = "vrop.ecm", .method = "get", .reply = R"({"vrop.ecm":{}})"},
        {.kind = Fault::Kind::Reply,
         .object = "vrop.ecm",
         .method = "get",
         .reply = R"({"vrop.ecm":{"formatstate":1}})"},
        {.kind = Fault::Kind::Status, .object = "vrop.ecm", .method = "get", .value = 4},
    };
    for (const Fault &fault : faults) {
        rig.router.clear_faults();
        rig.router.add_fault(fault);
        EXPECT_THAT(format("fail"), ElementsAre(outcome(1)));
        EXPECT_LE(ServiceRig::slept(), 600);
    }
}

TEST(OutdiskFormat, IsOfListedDisksOneAtATimeAndOnlyWhereAllowed) {
    ServiceRig rig;
    ASSERT_TRUE(router::make_hardware());
    EXPECT_EQ(rig.call("outdiskFormat", STICK), REFUSED); // the registration is not read
    get_qvtkRegister_info(&register_config);
    for (const char *bad : {"", "{}", R"({"diskPath":""})", R"({"diskPath":"/"})", R"({"diskPath":"/mnt"})",
                            R"({"diskPath":"/mnt/usb/"})", R"({"diskPath":"/mnt/../mnt/usb"})",
                            R"({"diskPath":"/mnt/usb\u0000"})", R"({"diskPath":"/dev/sda1"})"})
        EXPECT_EQ(rig.call("outdiskFormat", bad), REFUSED) << bad;
    EXPECT_EQ(rig.router.calls("vrop.ecm", "format").size(), 0u);
    std::atomic<bool> go = false;
    moving_clock::on_pause([&](moving_clock::Millis) { go.wait(false); });
    EXPECT_EQ(rig.call("outdiskFormat", STICK), BEGUN);
    EXPECT_TRUE(rig.router.wait_for_state("/vrop.ecm/formatstate", "1"));
    EXPECT_EQ(rig.call("outdiskFormat", STICK), "-1: 409 outdiskFormat {}");
    rig.router.set_state("/vrop.ecm/formatstate", "0");
    go = true;
    go.notify_all();
    EXPECT_TRUE(wait_for_log("format disk:/mnt/usb ok"));
}

// A pcap stream: the file's header, and a packet of each length.
std::string stream_of(const std::vector<uint32_t> &lengths, bool swapped = false) {
    auto number = [&](uint32_t value) {
        if (swapped) value = __builtin_bswap32(value);
        return std::string(reinterpret_cast<const char *>(&value), sizeof value);
    };
    std::string stream = number(0xa1b2c3d4) + std::string(20, '\0');
    for (uint32_t length : lengths)
        stream += std::string(8, 't') + number(length) + number(length) + std::string(length, 'p');
    return stream;
}

TEST(PacketFile, IsWholeUpToTheEndOfAPacket) {
    for (const bool swapped : {false, true}) {
        const std::string stream = stream_of({5, 0, 300}, swapped);
        for (const size_t step : {size_t{1}, size_t{7}, stream.size()}) {
            PacketLength length;
            std::set<size_t> ends;
            for (size_t at = 0; at < stream.size(); at += step) {
                const std::string piece = stream.substr(at, step);
                length.take(reinterpret_cast<const uint8_t *>(piece.data()), piece.size());
                ends.insert(length.whole());
            }
            EXPECT_EQ(length.whole(), stream.size());
            if (step == 1) {
                EXPECT_THAT(ends, ElementsAre(0, 24, 45, 61, stream.size()));
            }
        }
    }
}

// Stands in for tcpdump: refuses the filter "bad", else writes what it is to write and stays.
void put_tcpdump(const std::string &packets) {
    std::ofstream("/tmp/packets") << packets;
    script("tcpdump", "echo \"$*\" >>/tmp/tcpdump.runs\ncase \"$*\" in\n"
                      "*-d*bad) echo 'syntax error' >&2; exit 1 ;;\n*-d*) exit 0 ;;\nesac\n"
                      "cat /tmp/packets\nexec sleep 1000");
}

std::string capture_request(const std::string &change) {
    JsonRoot request(json_tokener_parse(
        R"({"time":1,"interface":"lo","uploadUrl":"https://h/put","url":"https://h/get"})"));
    const JsonRoot members(json_tokener_parse(change.c_str()));
    json_object_object_foreach(members.get(), name, value)
        json_object_object_add(request.get(), name, json_object_get(value));
    return json_object_to_json_string(request.get());
}

struct RemoteCap : testing::Test {
    RemoteCap() {
        // the capture's time passes no faster than packets come, and not before another was asked for
        moving_clock::on_pause([this](moving_clock::Millis) {
            go.wait(false);
            poll(nullptr, 0, 1);
        });
    }
    std::string call(const std::string &change = "{}") {
        return rig.call("remoteCap", capture_request(change).c_str());
    }
    std::string capture(const std::string &packets, size_t expected, int seconds = 10) {
        put_tcpdump(packets);
        go = false;
        EXPECT_EQ(call(R"({"filter":"-w /tmp/x `id`","time":)" + std::to_string(seconds) + "}"),
                  "0: 200 remoteCap {}");
        EXPECT_EQ(call(), "-1: 409 remoteCap {}");
        go = true;
        go.notify_all();
        EXPECT_TRUE(wait_for_log("capture ended, bytes:" + std::to_string(expected))) << main_log();
        return text_of(CAPTURE_FILE);
    }
    std::atomic<bool> go = true;
    ServiceRig rig;
    HelperStub helper{"common_put_file"};
};

TEST_F(RemoteCap, IsWholeSentOnceAndRemoved) {
    EventCatcher events(30);
    const std::string two = stream_of({60, 1500});
    for (const int status : {0, 1}) {
        helper.answer(std::to_string(status));
        EXPECT_EQ(capture(two + std::string(30, 'h'), two.size()), two);
        EXPECT_EQ(fs::status(CAPTURE_FILE).permissions(), fs::perms::owner_read | fs::perms::owner_write);
        EXPECT_FALSE(fs::exists("/aptmp/qvtk_capture.draft"));
        EXPECT_EQ(call(), "-1: 409 remoteCap {}"); // its file is still to be sent
        {
            const UrlFile another("https://h/other", LogSite::here());
            std::thread(capture_round).join(); // leaves it for the next round
        }
        capture_round();
        capture_round();
        EXPECT_EQ(helper.take_runs(), std::string(CAPTURE_FILE) + "\n");
        EXPECT_EQ(text_of("/tmp/url.txt"), "https://h/put");
        EXPECT_FALSE(fs::exists(CAPTURE_FILE));
        EXPECT_EQ(events.take().size(), status == 0 ? 1u : 0u);
    }
    EXPECT_EQ(text_of("/tmp/tcpdump.runs").substr(0, 43), "-n -i lo -d -- -w /tmp/x `id`\n-n -i lo -U -");
    EXPECT_EQ(capture("", 0), "");
}

TEST_F(RemoteCap, EndsAtEightMebibytes) {
    const std::string packet(stream_of({100000}).substr(24));
    std::string endless = stream_of({});
    while (endless.size() < (9 << 20))
        endless += packet;
    const size_t whole = 24 + ((8 << 20) - 24) / packet.size() * packet.size();
    EXPECT_EQ(capture(endless, whole, 300).size(), whole);
}

TEST_F(RemoteCap, RefusesWhatIsNoCapture) {
    put_tcpdump("");
    const std::string refused = "-1: 400 remoteCap {}";
    for (const char *bad :
         {R"({"time":0})", R"({"time":301})", R"({"interface":"nosuch"})", R"({"interface":"../net/lo"})",
          R"({"interface":"-D"})", R"({"interface":""})", R"({"uploadUrl":""})"})
        EXPECT_EQ(call(bad), refused) << bad;
    EXPECT_EQ(call(R"({"filter":")" + std::string(256, 'x') + "\"}"), refused);
    const std::string longest(184, 'u'); // but for one byte: its event carries no more
    EXPECT_EQ(call(R"({"url":")" + longest + R"(\""})"), refused);
    EXPECT_FALSE(fs::exists("/tmp/tcpdump.runs"));
    EXPECT_EQ(call(R"({"filter":"bad","url":")" + longest + "u\"}"), refused);
    EXPECT_TRUE(has_logged("tcpdump refuses: syntax error"));
    std::ofstream("/usr/bin/tcpdump") << "#!/bin/sh\nexit 1\n";
    EXPECT_EQ(call(), refused); // it may not capture
    fs::remove("/usr/bin/tcpdump");
    EXPECT_EQ(call(), refused);
    EXPECT_TRUE(has_logged("tcpdump cannot be run: install the package tcpdump"));
}

} // namespace
