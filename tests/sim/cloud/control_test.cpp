// SPDX-License-Identifier: Apache-2.0
// Scripting the simulated cloud from outside: the command line, and the control script on its socket.
#include "client.h"
#include "sim/cloud/options.h"
#include <array>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

using cloudsim::Cloud;
using testing::HasSubstr;

struct Outcome {
    int status;
    std::string output; // standard output and standard error
};

Outcome control(const std::string &arguments) {
    FILE *pipe = popen((CONTROL_SCRIPT " " + arguments + " 2>&1").c_str(), "r");
    Outcome outcome{-1, ""};
    std::array<char, 4096> part;
    while (std::size_t got = fread(part.data(), 1, part.size(), pipe))
        outcome.output.append(part.data(), got);
    int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

void write_file(const char *path, const std::string &bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

struct CloudControl : testing::Test {
    CloudControl() : cloud({.devices = {{SERIAL, PRODUCT, SECRET}}}) {
        cloud.start();
        cloud.start_control("/tmp/control.sock");
        setenv("QVTK_CLOUDSIM", "/tmp/control.sock", 1);
    }
    Reply check() { return perform(signed_call(cloud, cloudsim::check_upgrade_path, check_members("1"))); }
    Cloud cloud;
};

TEST_F(CloudControl, SocketIsItsOwnersAlone) {
    struct stat socket;
    ASSERT_EQ(stat("/tmp/control.sock", &socket), 0);
    EXPECT_EQ(socket.st_mode & 0777, 0600u);
    cloud.stop();
    EXPECT_NE(stat("/tmp/control.sock", &socket), 0);
    EXPECT_EQ(control("requests").status, 4);
}

TEST_F(CloudControl, OffersFirmware) {
    const std::string image("GIF\0\n\xff&?", 8);
    write_file("/tmp/my image.bin", image);
    write_file("/tmp/image.bin", image);
    EXPECT_EQ(control("firmware '/tmp/my image.bin' 2 1").status, 1);
    EXPECT_EQ(control("firmware /tmp/image.bin '2.0 &x=1' s1 --upper-md5 --wrong-size").status, 0);
    EXPECT_THAT(check().body, testing::AllOf(HasSubstr(R"("version":"2.0 &x=1")"),
                                             HasSubstr(R"("strategy":"s1")"), HasSubstr(R"("size":9,)")));
    EXPECT_EQ(perform({.url = cloud.url("/firmware/image.bin")}).body, image);
    EXPECT_EQ(control("firmware none").status, 0);
    EXPECT_EQ(check().body, R"({"code":0})");
}

TEST_F(CloudControl, SetsFaults) {
    const std::string raw("a=b&c\0d", 7);
    write_file("/tmp/raw", raw);
    EXPECT_EQ(control("fault check-upgrade status=500 'body={\"a\": \"b&c=d +\"}' count=2").status, 0);
    EXPECT_EQ(check().body, R"({"a": "b&c=d +"})");
    EXPECT_EQ(control("fault clear").status, 0);
    EXPECT_EQ(control("fault any body-file=/tmp/raw pieces=2").status, 0);
    EXPECT_EQ(check().body, raw);
    EXPECT_EQ(cloud.pending_faults(), 0u);
    EXPECT_EQ(control("fault any refuse=0").status, 0);
    EXPECT_EQ(check().result, CURLE_COULDNT_CONNECT);
    EXPECT_EQ(control("fault clear").status, 0);
    EXPECT_EQ(check().result, CURLE_OK);
}

TEST_F(CloudControl, ShowsRequestsServesFilesAndSettings) {
    for (int i = 0; i < 3; i++)
        check();
    Outcome shown = control("requests 2");
    EXPECT_EQ(std::ranges::count(shown.output, '\n'), 2);
    EXPECT_THAT(shown.output,
                HasSubstr(R"("path":"/device-api/device/check-upgrade","sn":"SN0001","verdict":"ok")"));
    write_file("/tmp/b.config", "backup");
    Outcome served = control("backup /tmp/b.config");
    EXPECT_EQ(served.output, cloud.url("/backup/b.config\n"));
    EXPECT_EQ(perform({.url = cloud.url("/backup/b.config")}).body, "backup");
    perform({.url = cloud.url("/upload/u"), .method = "PUT", .body = "sent"});
    EXPECT_EQ(control("upload u").output, "sent");
    EXPECT_EQ(control("upload v").status, 1);
    write_file("/tmp/settings", R"({"rules":[1]})");
    EXPECT_EQ(control("settings /tmp/settings").status, 0);
    EXPECT_EQ(perform(signed_call(cloud, cloudsim::get_settings_path)).body,
              R"({"code":0,"data":{"rules":[1]}})");
    write_file("/tmp/settings", "{");
    EXPECT_EQ(control("settings /tmp/settings").status, 1);
}

TEST_F(CloudControl, SaysWhatIsWrong) {
    const struct {
        const char *arguments;
        int status;
        const char *says;
    } rows[] = {
        {"", 2, "no command"},
        {"dance", 2, "unknown command dance"},
        {"firmware", 2, "FILE VERSION STRATEGY"},
        {"firmware /tmp/none 1 1", 2, "cannot read"},
        {"fault any", 2, "KEY=VALUE"},
        {"fault any cut", 2, "KEY=VALUE"},
        {"fault nowhere cut=1", 1, "unknown endpoint"},
        {"fault any colour=1", 1, "unknown key"},
        {"fault any cut=-1", 1, "not a number"},
        {"requests x", 1, "not a number"},
        {"--cloudsim /tmp/none requests", 4, "no cloudsim"},
        {"--help", 0, "Examples"},
    };
    for (const auto &row : rows) {
        Outcome outcome = control(row.arguments);
        EXPECT_EQ(outcome.status, row.status) << row.arguments << "\n" << outcome.output;
        EXPECT_THAT(outcome.output, HasSubstr(row.says));
    }
}

TEST(CloudCommandLine, IsReadAndChecked) {
    write_file("/tmp/f.img", "abc");
    write_file("/tmp/home.json", R"({"vrop.ftinfo":{"sn":"","mac":"A1B2C3D4E5F6"},)"
                                 R"("vrop.qvtkconfig":{"productkey":"P1","devicesecret":"K1"}})");
    cloudsim::CommandLine line = cloudsim::parse_command_line(
        {"--port", "0", "--device", "S:P:a:b", "--home", "/tmp/home.json", "--firmware", "/tmp/f.img", "2",
         "s", "--wrong-md5", "--fault", "any", "cut=1", "body-file=/tmp/f.img", "--fault", "firmware",
         "silent=1", "--http"});
    ASSERT_EQ(line.options.devices.size(), 2u);
    EXPECT_EQ(line.options.devices[0].secret, "a:b");
    EXPECT_EQ(line.options.devices[1].serial, "a1b2c3d4e5f6");
    EXPECT_EQ(line.options.devices[1].secret, "K1");
    EXPECT_TRUE(line.firmware->wrong_md5 && line.firmware->image == "abc" && line.firmware->name == "f.img");
    ASSERT_EQ(line.faults.size(), 2u);
    EXPECT_EQ(line.faults[0].body, "abc");
    EXPECT_EQ(line.scheme, cloudsim::Scheme::http);
    const std::vector<std::vector<std::string>> wrong = {
        {"--colour"},
        {"--port"},
        {"--port", "x"},
        {"--device", "S:P"},
        {"--wrong-md5"},
        {"--firmware", "/tmp/f.img", "2"},
        {"--firmware", "/none", "1", "1"},
        {"--home", "/tmp/f.img"},
        {"--fault", "nowhere"},
        {"--fault", "any", "cut=x"},
    };
    for (const auto &arguments : wrong)
        EXPECT_THROW(cloudsim::parse_command_line(arguments), std::invalid_argument) << arguments[0];
}

} // namespace
