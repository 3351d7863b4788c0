// SPDX-License-Identifier: Apache-2.0
// The helper programs as built, run by name as the agent runs them.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>

#include <gmock/gmock.h>
#include <json-c/json.h>

#include "core/handles.h"
#include "core/json_path.h"
#include "sim/cloud/cloud.h"
#include "support/router_rig.h"
#include "support/text_file.h"

namespace {

using testing::MatchesRegex;
namespace fs = std::filesystem;

constexpr char SECRET[] = "simulated-device-secret";
constexpr char SETTINGS[] = "/tmp/time_settings.json";
constexpr char CONFIGURATION[] = "/tmp/backup.config";
constexpr char ADDRESS[] = "/tmp/url.txt";

struct Ran {
    int status;
    std::string errors; // all of stderr
    std::string output; // all of stdout
};

Ran run(const std::string &command) {
    int raw = system((command + " >/tmp/run.out 2>/tmp/run.err").c_str());
    Ran result = {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, text_of("/tmp/run.err"), text_of("/tmp/run.out")};
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.find(SECRET), std::string::npos);
    return result;
}

void expect_failure(const Ran &run, const std::string &line) {
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.errors, MatchesRegex(line + "\n"));
}

void write_file(const std::string &path, const std::string &text) {
    std::ofstream(path) << text;
}

class Helpers : public testing::Test {
  protected:
    Helpers() {
        cloud.add_device({"SIM2408000017", "Tq83mZc1wk", SECRET});
        cloud.start();
        rig.router.set_state("/vrop.qvtkconfig/reporturl", quoted(cloudsim::report_runtime_path));
        rig.router.set_state("/vrop.qvtkconfig/timeurl", quoted(cloudsim::get_settings_path));
        rig.router.set_state("/vrop.qvtkconfig/upgradeprourl", quoted(cloudsim::upgrade_progress_path));
        rig.router.set_state("/vrop.qvtkconfig/backupurl", quoted(cloudsim::upload_config_path));
        write_file(UPGRADE_LOG, "[t][f][1]buf:{\"newversion\": \"V1.0.3\", \"strategy\": \"1\"}\n");
    }
    std::string quoted(const char *path) { return "\"" + cloud.url(path) + "\""; }
    void fault(const char *endpoint, const std::function<void(cloudsim::Fault &)> &change) {
        cloudsim::Fault fault;
        fault.endpoint = endpoint;
        change(fault);
        cloud.fault(fault);
    }

    RouterRig rig;
    cloudsim::Cloud cloud;
};

TEST_F(Helpers, WrongUsage) {
    for (const char *command :
         {"post_data", "post_data 4", "post_data 10", "post_data ''", "post_data -1", "post_data x",
          "post_data 1 1", "common_put_file", "common_put_file a b", "post_file x"}) {
        Ran result = run(command);
        EXPECT_EQ(result.status, 2) << command;
        EXPECT_THAT(result.errors, MatchesRegex("usage: [a-z_]+ .*\n")) << command;
    }
    EXPECT_TRUE(cloud.requests().empty());
}

TEST_F(Helpers, PostedRequestsAreSignedJson) {
    for (const auto &[mode, path] : {std::pair{"0", cloudsim::report_runtime_path},
                                     {"1", cloudsim::get_settings_path},
                                     {"3", cloudsim::upgrade_progress_path}}) {
        cloud.clear_requests();
        EXPECT_EQ(run(std::string("/usr/bin/post_data ") + mode).status, 0) << mode;
        ASSERT_EQ(cloud.requests().size(), 1U);
        const cloudsim::Request request = cloud.requests().front();
        EXPECT_EQ(request.method + request.path, std::string("POST") + path);
        EXPECT_EQ(request.verdict, "ok");
        EXPECT_EQ(request.headers.find("content-type")->second, "application/json");
    }
}

TEST_F(Helpers, PostedRequestsFailUnlessTheServerTookThem) {
    struct Case {
        std::function<void(cloudsim::Fault &)> change;
        const char *line;
    };
    const Case cases[] = {
        {[](cloudsim::Fault &f) { f.status = 500; }, "post_data: the server answered HTTP 500"},
        {[](cloudsim::Fault &f) { f.status = 302; }, "post_data: the server answered HTTP 302"},
        {[](cloudsim::Fault &f) { f.body = "{\"code\":7}"; },
         "post_data: the server refused the request with code 7"},
        {[](cloudsim::Fault &f) { f.body = "{}"; }, "post_data: the server's reply holds no \"code\""},
        {[](cloudsim::Fault &f) { f.body = "<html>"; }, "post_data: the server's reply holds no \"code\""},
        {[](cloudsim::Fault &f) { f.body = "{\"code\":null}"; },
         "post_data: the server's reply holds no \"code\""},
        {[](cloudsim::Fault &f) { f.body = ""; }, "post_data: the server's reply holds no \"code\""},
        {[](cloudsim::Fault &f) { f.body = std::string(70000, ' ') + "{\"code\":0}"; },
         "post_data: transfer failed: .*"},
        {[](cloudsim::Fault &f) { f.drop = true; }, "post_data: transfer failed: .*"},
        {[](cloudsim::Fault &f) { f.cut = 3; }, "post_data: transfer failed: .*"},
    };
    write_file(SETTINGS, "before");
    for (const char *mode : {"0", "1", "3"})
        for (const Case &c : cases) {
            fault("any", c.change);
            expect_failure(run(std::string("post_data ") + mode), c.line);
        }
    EXPECT_EQ(text_of(SETTINGS), "before");
    rig.router.set_state("/vrop.qvtkconfig/devicesecret", "\"other\"");
    EXPECT_EQ(run("post_data 1").status, 1);
    EXPECT_EQ(text_of(SETTINGS), "before");
}

TEST_F(Helpers, RequestsThatCannotBeMade) {
    fs::remove(UPGRADE_LOG);
    expect_failure(run("post_data 3"), "post_data: the request cannot be built: 100003");
    rig.router.stop(); // no bus: no configuration, no address
    for (const char *mode : {"0", "1"})
        expect_failure(run(std::string("post_data ") + mode),
                       "post_data: the registration record holds no address for this request");
}

TEST_F(Helpers, SettingsAreKeptWhole) {
    cloud.set_settings(R"({"rules": [{"mac": "aa"}]})");
    EXPECT_EQ(run("post_data 1").status, 0);
    EXPECT_EQ(text_of(SETTINGS), R"({"rules":[{"mac":"aa"}]})");
    EXPECT_EQ(fs::status(SETTINGS).permissions(), fs::perms(0600));
    fault("get-settings", [](cloudsim::Fault &f) { f.body = "{\"code\":0}"; });
    EXPECT_EQ(run("post_data 1").status, 0);
    EXPECT_EQ(text_of(SETTINGS), R"({"rules":[{"mac":"aa"}]})");
    fs::remove(SETTINGS);
    fs::create_directory(SETTINGS);
    expect_failure(run("post_data 1"), "post_data: cannot write /tmp/time_settings.json");
}

TEST_F(Helpers, ConfigurationIsFetchedWholeOrNotAtAll) {
    struct Case {
        size_t size;
        int status;
    };
    for (const Case &c : {Case{1, 0}, Case{1024 * 1024, 0}, Case{1024 * 1024 + 1, 1}}) {
        const std::string bytes(c.size, 'c');
        write_file(ADDRESS, cloud.url(cloud.add_backup("home.config", bytes)));
        write_file(CONFIGURATION, "before");
        EXPECT_EQ(run("post_data 2").status, c.status) << c.size;
        EXPECT_TRUE(text_of(CONFIGURATION) == (c.status == 0 ? bytes : "before")) << c.size;
    }
    write_file(ADDRESS, cloud.url(cloud.add_backup("home.config", std::string(5000, 'c'))) + " \r\n");
    EXPECT_EQ(run("post_data 2").status, 0);
    write_file(CONFIGURATION, "before");
    fault("backup", [](cloudsim::Fault &f) { f.cut = 4999; });
    expect_failure(run("post_data 2"), "post_data: transfer failed: .*");
    fault("backup", [](cloudsim::Fault &f) { f.status = 404; });
    expect_failure(run("post_data 2"), "post_data: the server answered HTTP 404");
    EXPECT_EQ(text_of(CONFIGURATION), "before");
}

TEST_F(Helpers, AddressFileThatIsNoAddress) {
    write_file("/tmp/file.bin", "bytes");
    for (const char *command : {"post_data 2", "common_put_file /tmp/file.bin"}) {
        fs::remove(ADDRESS);
        expect_failure(run(command), "[a-z_]+: cannot read /tmp/url.txt");
        write_file(ADDRESS, " \n");
        expect_failure(run(command), "[a-z_]+: /tmp/url.txt holds no address");
        write_file(ADDRESS, "http://host/" + std::string(2000, 'a'));
        expect_failure(run(command), "[a-z_]+: the address in /tmp/url.txt is too long");
        write_file(ADDRESS, "file:///etc/passwd");
        expect_failure(run(command), "[a-z_]+: transfer failed: Unsupported protocol");
        write_file(ADDRESS, "https://127.0.0.1:1/");
        expect_failure(run(command), "[a-z_]+: transfer failed: .*");
    }
    EXPECT_FALSE(fs::exists(CONFIGURATION));
}

TEST_F(Helpers, FilesArePut) {
    write_file(ADDRESS, cloud.url("/upload/capture.pcap"));
    for (size_t size : {size_t{0}, size_t{1}, size_t{3000000}}) {
        const std::string bytes(size, 'p');
        write_file("/tmp/cap.pcap", bytes);
        EXPECT_EQ(run("/usr/bin/common_put_file /tmp/cap.pcap").status, 0);
        EXPECT_TRUE(cloud.uploaded("capture.pcap") == bytes) << size;
    }
    expect_failure(run("common_put_file /tmp/none"), "common_put_file: cannot read /tmp/none");
    expect_failure(run("common_put_file /tmp"), "common_put_file: /tmp is not a file");
    fault("upload", [](cloudsim::Fault &f) { f.status = 403; });
    expect_failure(run("common_put_file /tmp/cap.pcap"), "common_put_file: the server answered HTTP 403");
}

TEST_F(Helpers, NewestBackupIsPosted) {
    expect_failure(run("post_file"), "post_file: there is no /tmp/\\*_\\*_\\*.config");
    const char *names[] = {"/tmp/a_b_old.config", "/tmp/b_new_c.config", "/tmp/c_d_older.config",
                           "/tmp/plain.config"};
    const int ages[] = {60, 5, 3600, 0};
    for (size_t i = 0; i < std::size(names); i++) {
        write_file(names[i], names[i]);
        fs::last_write_time(names[i], fs::file_time_type::clock::now() - std::chrono::seconds(ages[i]));
    }
    EXPECT_EQ(run("post_file").status, 0);
    ASSERT_EQ(cloud.requests().size(), 1U);
    const cloudsim::Request request = cloud.requests().front();
    EXPECT_EQ(request.path, cloudsim::upload_config_path);
    EXPECT_EQ(request.verdict, "ok");
    EXPECT_EQ(request.fields.at("file"), names[1]);
    EXPECT_EQ(request.fields.at("sn"), "SIM2408000017");
    fault("upload-config-file", [](cloudsim::Fault &f) { f.body = "{\"code\":1}"; });
    expect_failure(run("post_file"), "post_file: the server refused the request with code 1");
}

} // namespace
