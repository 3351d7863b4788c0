// SPDX-License-Identifier: Apache-2.0
// What Linux tells of ports, hardware and disks, whatever its files hold.
#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <sys/statvfs.h>

#include <gmock/gmock.h>

#include "core/json_path.h"
#include "services/disks.h"
#include "services/hardware.h"
#include "services/service_rig.h"
#include "sim/router/hardware.h"

static std::atomic<int> asked;
static std::atomic<bool> hangs;
extern "C" int __real_statvfs(const char *path, struct statvfs *disk);
// A disk that answers when it no longer hangs.
extern "C" int __wrap_statvfs(const char *path, struct statvfs *disk) {
    asked++;
    hangs.wait(true);
    return __real_statvfs(path, disk);
}

namespace {

std::string answer_of(const char *service) {
    const std::string good = std::string("0: 200 ") + service + " ",
                      said = ServiceRig().call(service, nullptr);
    return said.starts_with(good) ? said.substr(good.size()) : said;
}

void say(const std::string &path, const std::string &text) {
    std::ofstream(path) << text;
}

std::string port(const char *name, const char *link, int speed, const char *duplex) {
    return std::string(R"({"name":")") + name + R"(","link":)" + link + R"(,"speed":)" +
           std::to_string(speed) + R"(,"duplex":")" + duplex + "\"}";
}

TEST(Ports, AreTheWiredInterfacesWithHardware) {
    EXPECT_EQ(answer_of("portLinkSpeed"), R"({"ports":[]})");
    ASSERT_TRUE(router::make_hardware());
    const std::string lan1 = port("lan1", "true", 1000, "full"), wan = port("wan", "true", 1000, "full"),
                      lan2 = port("lan2", "true", 1000, "full"), lan3 = port("lan3", "false", 0, "unknown");
    auto list = [&](const std::string &first) {
        return R"({"ports":[)" + first + "," + lan2 + "," + lan3 + "," + wan + "]}";
    };
    EXPECT_EQ(answer_of("portLinkSpeed"), list(lan1));
    say("/sys/class/net/lan1/speed", "100\n");
    say("/sys/class/net/lan1/duplex", "half\n");
    EXPECT_EQ(answer_of("portLinkSpeed"), list(port("lan1", "true", 100, "half")));
    for (const std::string &odd : {std::string(), std::string("-1\n"), std::string("99999999999999999999"),
                                   std::string("\"},{"), std::string(9000, '\xff')}) {
        say("/sys/class/net/lan1/speed", odd);
        say("/sys/class/net/lan1/duplex", odd);
        EXPECT_EQ(answer_of("portLinkSpeed"), list(port("lan1", "true", 0, "unknown"))) << odd;
    }
}

TEST(Hardware, IsDescribedFromWhatThereIs) {
    ASSERT_TRUE(router::make_hardware());
    say("/sys/class/thermal/thermal_zone0/temp", "91000\n");
    say("/sys/class/thermal/thermal_zone1/temp", "");
    JsonRoot answer = JsonParseUtf8(answer_of("physicsInfo").c_str());
    ASSERT_TRUE(answer);
    for (const char *positive :
         {"cpu.cores", "memory.total", "memory.available", "flash.total", "flash.free", "uptime"})
        EXPECT_GT(JsonGetInt64(answer.get(), positive), 0) << positive;
    EXPECT_GE(JsonGetInt64(answer.get(), "cpu.usage"), 0);
    json_object *list = nullptr;
    JsonGetObj(answer.get(), "cpu.load", &list);
    EXPECT_EQ(json_object_array_length(list), 3U);
    EXPECT_STREQ(JsonGetStr(answer.get(), "temperatures"),
                 R"([ { "name": "cpu-thermal", "celsius": 91.00 } ])");
}

TEST(Hardware, ProcFilesMayHoldAnything) {
    EXPECT_EQ(cpu_usage({10, 100}, {60, 200}), 50);
    EXPECT_EQ(cpu_usage({60, 200}, {10, 100}), 0);
    EXPECT_EQ(cpu_usage({0, 0}, {9, 3}), 100);
    EXPECT_EQ(cpu_times("cpu  1 2 3 40 50 6 7 8\ncpu0 9").busy, 27U);
    EXPECT_EQ(cpu_times("cpu  1 2 3 40 50 6 7 8\ncpu0 9").total, 117U);
    for (const char *odd : {"", "cpu", "cpu x", "cpux 1 2", "intr 5"})
        EXPECT_EQ(cpu_times(odd).total, 0U) << odd;
    EXPECT_EQ(meminfo_kib("XMemTotal: 5 kB\nMemTotal:   123 kB\n", "MemTotal"), 123);
    for (const char *odd : {"", "MemTotal", "MemTotal: x", "MemTotal: -5", "MemTotal: 99999999999999999999"})
        EXPECT_EQ(meminfo_kib(odd, "MemTotal"), 0) << odd;
}

TEST(Disks, AreTheExternalOnesWithTheirRoom) {
    EXPECT_EQ(answer_of("diskCheck"), R"({"disks":[]})");
    ASSERT_TRUE(router::make_hardware());
    auto stick = [](int free) {
        return R"({"disks":[{"path":"\/mnt\/usb","device":"\/dev\/sda1","fs":"tmpfs","total":1024,"free":)" +
               std::to_string(free) + R"(,"readOnly":false,"status":0}]})";
    };
    EXPECT_EQ(answer_of("diskCheck"), stick(1024));
    say("/mnt/usb/full", std::string(2 << 20, 'x'));
    EXPECT_EQ(answer_of("diskCheck"), stick(0));
    std::filesystem::create_directories("/sys/block/sdb");
    say("/sys/block/sdb/removable", "1\n");
    const auto disks = external_disks();
    ASSERT_EQ(disks.size(), 2U);
    EXPECT_EQ(disks[1].device + " " + disks[1].path, "/dev/sdb ");
    EXPECT_EQ(disks[1].status, DISK_NOT_MOUNTED);
}

TEST(Disks, OneThatDoesNotAnswerIsAskedOnceAndHoldsNobody) {
    ASSERT_TRUE(router::make_hardware());
    const auto status = [] { return external_disks()[0].status; };
    hangs = true;
    auto other = std::async(std::launch::async, status);
    EXPECT_EQ(status(), DISK_NOT_MOUNTED);
    EXPECT_EQ(other.get(), DISK_NOT_MOUNTED);
    EXPECT_EQ(asked, 1);
    hangs = false;
    hangs.notify_all();
    EXPECT_EQ(status(), DISK_GOOD);
}

TEST(Disks, MountTableIsReadAsItIsWritten) {
    const auto mounts = mounts_of(
        "/dev/sda1 /mnt/a\\040b\\134c vfat rw,ro_x 0 0\nshort line\n\n/dev/sdb /b ext4 nosuid,ro 0 0");
    ASSERT_EQ(mounts.size(), 2U);
    EXPECT_EQ(mounts[0].path, "/mnt/a b\\c");
    EXPECT_FALSE(mounts[0].read_only);
    EXPECT_EQ(mounts[1].device + mounts[1].filesystem, "/dev/sdbext4");
    EXPECT_TRUE(mounts[1].read_only);
}

} // namespace
