// SPDX-License-Identifier: Apache-2.0
// The helper programs as built, run by name as the agent runs them.
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>

#include <gmock/gmock.h>

#include "support/cloud_rig.h"
#include "support/other_user.h"
#include "support/text_file.h"

namespace {

using testing::ElementsAre;
using testing::MatchesRegex;
namespace fs = std::filesystem;

constexpr char SETTINGS[] = "/aptmp/time_settings.json";
constexpr char CONFIGURATION[] = "/tmp/backup.config";
constexpr char ADDRESS[] = "/tmp/url.txt";
constexpr char USAGE[] = "usage: [a-z_]+ .*";
constexpr char NO_CODE[] = "the server's reply holds no number as \"code\"";

// Runs a program, which says nothing and succeeds, says how it is used, or says its name and why it failed.
void expect(const std::string &command, const std::string &line) {
    SCOPED_TRACE(command);
    int raw = system((command + " >/tmp/run.out 2>/tmp/run.err").c_str());
    EXPECT_EQ(WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, line.empty() ? 0 : line == USAGE ? 2 : 1);
    const std::string start =
        line.empty() || line == USAGE ? "" : command.substr(0, command.find(' ')) + ": ";
    EXPECT_THAT(text_of("/tmp/run.err"), MatchesRegex(line.empty() ? "" : start + line + "\n"));
    EXPECT_EQ(text_of("/tmp/run.out"), "");
}

void give_away(const char *path) {
    EXPECT_EQ(chown(path, SOMEBODY, SOMEBODY), 0);
}

struct Helpers : CloudRig, testing::Test {
    Helpers() {
        std::ofstream(UPGRADE_LOG) << "[t][f][1]buf:{\"newversion\": \"V1.0.3\", \"strategy\": \"1\"}\n";
    }
};

TEST_F(Helpers, WrongUsage) {
    for (const char *command :
         {"post_data", "post_data 4", "post_data 10", "post_data ''", "post_data -1", "post_data x",
          "post_data 1 1", "common_put_file", "common_put_file a b", "post_file x"})
        expect(command, USAGE);
    EXPECT_TRUE(cloud.requests().empty());
}

TEST(AboutPrograms, AreToldWithoutBusOrServer) {
    for (const std::string name : {"post_data", "common_put_file", "post_file"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(system((name + " --version >/tmp/version && " + name + " --help >/tmp/help").c_str()), 0);
        EXPECT_EQ(text_of("/tmp/version"), name + " " QVTK_VERSION "\n");
        EXPECT_THAT(text_of("/tmp/help"), MatchesRegex("usage: " + name + ".*\n"));
    }
}

TEST_F(Helpers, PostedRequestsAreSignedJson) {
    std::vector<std::string> seen;
    for (const char *command : {"post_data 0", "/usr/bin/post_data 1", "post_data 3"})
        expect(command, "");
    for (const cloudsim::Request &request : cloud.requests())
        seen.push_back(request.method + " " + request.headers.find("content-type")->second + " " +
                       request.verdict + " " + request.path.substr(request.path.rfind('/')));
    EXPECT_THAT(seen, ElementsAre("POST application/json ok /report-runtime",
                                  "POST application/json ok /get-settings",
                                  "POST application/json ok /upgrade-progress"));
}

TEST_F(Helpers, PostedRequestsFailUnlessTheServerTookThem) {
    const std::pair<cloudsim::Fault, std::string> cases[] = {
        {{.status = 500}, "the server answered HTTP 500"},
        {{.status = 302}, "the server answered HTTP 302"},
        {{.body = R"({"code":7})"}, "the server refused the request with code 7"},
        {{.body = "{}"}, NO_CODE},
        {{.body = "<html>"}, NO_CODE},
        {{.body = R"({"code":null})"}, NO_CODE},
        {{.body = R"({"code":"denied"})"}, NO_CODE},
        {{.body = R"({"code":[]})"}, NO_CODE},
        {{.body = R"({"code":0.7})"}, NO_CODE},
        {{.body = R"({"code":4294967296})"}, "the server refused the request with code 2147483647"},
        {{.body = ""}, NO_CODE},
        {{.body = std::string(70000, ' ') + R"({"code":0})"}, "transfer failed: .*"},
        {{.drop = true}, "transfer failed: .*"},
        {{.cut = 3}, "transfer failed: .*"},
    };
    std::ofstream(SETTINGS) << "before";
    for (const char *command : {"post_data 0", "post_data 1", "post_data 3"})
        for (const auto &[fault, line] : cases) {
            cloud.fault(fault);
            expect(command, line);
        }
    router.set_state("/vrop.qvtkconfig/devicesecret", "\"other\"");
    expect("post_data 1", "the server refused the request with code [0-9]+");
    EXPECT_EQ(text_of(SETTINGS), "before");
    fs::remove(UPGRADE_LOG);
    expect("post_data 3", "the request cannot be built: 100003");
    router.stop(); // no bus: no configuration, no address
    for (const char *command : {"post_data 0", "post_data 1"})
        expect(command, "the registration record holds no address for this request");
}

TEST_F(Helpers, SettingsAreKeptWhole) {
    cloud.set_settings(R"({"rules": [{"mac": "aa"}]})");
    for (int i = 0; i < 2; i++) { // the second reply holds none
        expect("post_data 1", "");
        EXPECT_EQ(text_of(SETTINGS), R"({"rules":[{"mac":"aa"}]})");
        EXPECT_EQ(fs::status(SETTINGS).permissions(), fs::perms(0600));
        cloud.fault({.endpoint = "get-settings", .body = R"({"code":0})"});
    }
    cloud.clear_faults();
    fs::remove(SETTINGS);
    fs::create_directory(SETTINGS);
    expect("post_data 1", "cannot write /aptmp/time_settings.json");
}

TEST_F(Helpers, ConfigurationIsFetchedWholeOrNotAtAll) {
    const std::tuple<size_t, cloudsim::Fault, std::string> cases[] = {
        {0, cloudsim::Fault{}, "the server sent an empty configuration"},
        {1, cloudsim::Fault{}, ""},
        {1024 * 1024, cloudsim::Fault{}, ""},
        {1024 * 1024 + 1, {}, "transfer failed: .*"},
        {5000, {.cut = 4999}, "transfer failed: .*"},
        {5000, {.status = 404}, "the server answered HTTP 404"},
    };
    for (const auto &[size, fault, line] : cases) {
        const std::string bytes(size, 'c');
        std::ofstream(ADDRESS) << cloud.url(cloud.add_backup("home.config", bytes)) << " \r\n";
        std::ofstream(CONFIGURATION) << "before";
        cloud.fault(fault);
        expect("post_data 2", line);
        EXPECT_TRUE(text_of(CONFIGURATION) == (line.empty() ? bytes : "before")) << size;
    }
}

TEST_F(Helpers, AddressFileThatIsNoAddress) {
    if (!can_give_files_away()) GTEST_SKIP() << "takes root, and other users";
    const std::pair<std::string, std::string> cases[] = {
        {" \n", "/tmp/url.txt holds no address"},
        {"http://host/" + std::string(2000, 'a'), "the address in /tmp/url.txt is too long"},
        {"file:///etc/passwd", "transfer failed: Unsupported protocol"},
        {"https://127.0.0.1:1/", "transfer failed: .*"},
    };
    std::ofstream("/tmp/file.bin") << "bytes";
    for (const char *command : {"post_data 2", "common_put_file /tmp/file.bin"}) {
        fs::remove(ADDRESS);
        expect(command, "cannot read /tmp/url.txt");
        for (const auto &[address, line] : cases) {
            std::ofstream(ADDRESS) << address;
            expect(command, line);
        }
        give_away(ADDRESS);
        expect(command, "cannot read /tmp/url.txt");
        fs::remove(ADDRESS);
        mkfifo(ADDRESS, 0600);
        expect(command, "cannot read /tmp/url.txt");
    }
    EXPECT_FALSE(fs::exists(CONFIGURATION));
}

TEST_F(Helpers, FilesArePut) {
    if (!can_give_files_away()) GTEST_SKIP() << "takes root, and other users";
    std::ofstream(ADDRESS) << cloud.url("/upload/capture.pcap");
    for (size_t size : {0, 1, 3000000}) {
        const std::string bytes(size, 'p');
        std::ofstream("/tmp/cap.pcap") << bytes;
        expect("/usr/bin/common_put_file /tmp/cap.pcap", "");
        EXPECT_TRUE(cloud.uploaded("capture.pcap") == bytes) << size;
    }
    expect("common_put_file /tmp/none", "cannot read /tmp/none");
    mkfifo("/tmp/fifo", 0600);
    std::ofstream("/tmp/foreign") << "bytes";
    give_away("/tmp/foreign");
    for (const char *path : {"/tmp", "/tmp/fifo", "/tmp/foreign"})
        expect(std::string("common_put_file ") + path, path + std::string(" is not a file of the agent's"));
    cloud.fault({.endpoint = "upload", .status = 403});
    expect("common_put_file /tmp/cap.pcap", "the server answered HTTP 403");
}

TEST_F(Helpers, NewestBackupIsPosted) {
    if (!can_give_files_away()) GTEST_SKIP() << "takes root, and other users";
    expect("post_file", "there is no /tmp/\\*_\\*_\\*.config");
    for (const auto &[name, age] : {std::pair{"/tmp/a_b_old.config", 60},
                                    {"/tmp/b_new_c.config", 5},
                                    {"/tmp/c_d_older.config", 3600},
                                    {"/tmp/plain.config", 0}}) {
        std::ofstream(name) << name;
        fs::last_write_time(name, fs::file_time_type::clock::now() - std::chrono::seconds(age));
    }
    std::ofstream("/tmp/f_g_newest.config") << "of somebody else";
    give_away("/tmp/f_g_newest.config");
    mkfifo("/tmp/f_i_fo.config", 0600);
    expect("post_file", "");
    const cloudsim::Request request = cloud.requests().at(0);
    EXPECT_EQ(request.path, cloudsim::upload_config_path);
    EXPECT_EQ(request.verdict, "ok");
    EXPECT_EQ(request.fields.at("file"), "/tmp/b_new_c.config");
    EXPECT_EQ(request.fields.at("sn"), "SIM2408000017");
    cloud.fault({.body = R"({"code":1})"});
    expect("post_file", "the server refused the request with code 1");
}

} // namespace
