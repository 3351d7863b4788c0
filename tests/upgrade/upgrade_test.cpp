// SPDX-License-Identifier: Apache-2.0
// Both ways of upgrading, put through everything that can become of an image.
#include "upgrade/https_upgrade.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>

#include <gmock/gmock.h>

#include "core/json_path.h"
#include "core/log.h"
#include "https/requests.h"
#include "sim/router/faults.h"
#include "sim/router/images.h"
#include "support/cloud_rig.h"
#include "support/curl_spy.h"
#include "support/event_catcher.h"
#include "support/moving_clock.h"
#include "support/text_file.h"
#include "upgrade/firmware.h"
#include "upgrade/sdk_upgrade.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
namespace fs = std::filesystem;

constexpr char MAC[] = "A1:B2:C3:D4:E5:F6";
constexpr size_t IMAGE_SIZE = 300 * 1024;
constexpr char IMAGE_MD5[] = "aef3b4c66f65521180a66d3dd93a41dc";
constexpr char UPPER_MD5[] = "AEF3B4C66F65521180A66D3DD93A41DC";
constexpr const char *IMAGES[] = {"qvtk_upgrade.bin", "firmware.img"};
constexpr char BEFORE[] = "buf:{\"newversion\": \"V1.9.9\", \"strategy\": \"old\"}\n";
constexpr char VICTIM[] = "/apetc/victim";
constexpr char NOBODY[] = "https://127.0.0.1:1/";
constexpr long INTERVAL = 1800 * 1000; // milliseconds between two checks

void limit_files(rlim_t bytes) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {bytes, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
}

// What a message says, without its frame: " value text".
std::string said(const std::string &message) {
    JsonRoot document(json_tokener_parse(message.c_str()));
    std::string values;
    for (const char *key : {"progress", "result", "reason", "msg"})
        if (const char *value = JsonGetStr(document.get(), key)) values += std::string(" ") + value;
    return values;
}

// What is found afterwards.
std::string left(const char *image) {
    const bool logged =
        upgrade_log().find(R"(buf:{"newversion": "V2.0.0", "strategy": "force"})") != std::string::npos;
    const bool old = upgrade_log().starts_with(BEFORE);
    return std::string(fs::is_regular_file(fs::symlink_status(image)) ? ", image" : "") +
           (logged ? ", log" : "") + (old ? ", log of before" : "");
}

struct Rig : CloudRig {
    Rig() {
        EXPECT_TRUE(router::share_images());
        router.set_state("/sim/restartdelay", "3600000"); // milliseconds: after the test
        firmware.name = "router.img";
        firmware.image = std::string(IMAGE_SIZE, 'i');
        firmware.strategy = "force";
        repair();
    }
    // Puts everything right for the next attempt.
    void repair() {
        limit_files(RLIM_INFINITY);
        curl_spy.limits.clear();
        for (const std::string image : IMAGES)
            fs::remove("/aptmp/" + image);
        cloud.clear_faults();
        cloud.clear_requests();
        router.clear_faults();
        router.clear_calls();
        qvtk_set_download_upgrade_result(-1);
        std::ofstream(UPGRADE_LOG) << BEFORE;
        firmware.version = "V2.0.0";
        firmware.url = cloud.url("/firmware/router.img");
        firmware.md5 = IMAGE_MD5;
        firmware.wrong_size = false;
    }
    // Upgrade by one way: what was reported, given back and left.
    std::string by_sdk() {
        cloud.offer(firmware);
        creat_event_client();
        int result = qvtkUpgrade_handle(firmware.url->c_str(), firmware.md5->c_str(), MAC, "V2.0.0", "force");
        std::string end;
        for (const std::string &event : relay.take())
            end += said(event);
        return end + ", returns " + std::to_string(result) + ", keeps " +
               std::to_string(qvtk_get_download_upgrade_result()) + left("/aptmp/qvtk_upgrade.bin");
    }
    std::string by_https() {
        cloud.offer(firmware);
        moving_clock::advance(INTERVAL);
        http_upgrade_round(&last_check);
        return told_cloud() + left("/aptmp/firmware.img");
    }
    std::string told_cloud() const {
        std::string end;
        for (const cloudsim::Request &request : cloud.requests()) {
            EXPECT_TRUE(request.verified || request.method == "GET") << request.verdict;
            if (request.path == cloudsim::upgrade_progress_path) end += said(request.body);
        }
        return end;
    }

    cloudsim::Firmware firmware;
    EventCatcher relay{128};
    time_t last_check = http_upgrade_start();
};

enum Outcome { FLASHED, REFUSED, NOT_LOADED, WRONG_SIZE, WRONG_DIGEST, NOT_OFFERED };

void refuse_to_flash(Rig &rig) {
    rig.router.add_fault(router::parse_fault("result=2 vrop upgrade"));
}

void take_file_names(Rig &) {
    for (const std::string image : IMAGES)
        fs::create_directory("/aptmp/" + image);
}

void leave_links(Rig &) {
    std::ofstream(VICTIM) << "kept";
    for (const std::string image : IMAGES)
        fs::create_symlink(VICTIM, "/aptmp/" + image);
}

void leave_fifos(Rig &) {
    for (const std::string image : IMAGES)
        mkfifo(("/aptmp/" + image).c_str(), 0666);
}

void end_soon(Rig &) {
    curl_spy.limits = {{IMAGE_SECONDS, 300}};
}

struct Case {
    const char *name;
    Outcome by_sdk, by_https;
    cloudsim::Fault fault = {}; // of the downloads
    void (*arrange)(Rig &) = [](Rig &) {};
};

const Case CASES[] = {
    {"good at once", FLASHED, FLASHED},
    {"good on second try", FLASHED, FLASHED, {.count = 1, .drop = true}},
    {"good on third try", FLASHED, FLASHED, {.count = 2, .drop = true}},
    {"good on fourth try", NOT_LOADED, FLASHED, {.count = 3, .drop = true}},
    {"connection refused", NOT_LOADED, NOT_LOADED, {}, [](Rig &r) { r.firmware.url = NOBODY; }},
    {"silent server", NOT_LOADED, NOT_LOADED, {.silent = true}, end_soon},
    {"cut at 0", NOT_LOADED, NOT_LOADED, {.cut = 0}},
    {"cut at 1", NOT_LOADED, NOT_LOADED, {.cut = 1}},
    {"cut at half", NOT_LOADED, NOT_LOADED, {.cut = IMAGE_SIZE / 2}},
    {"cut before last byte", NOT_LOADED, NOT_LOADED, {.cut = IMAGE_SIZE - 1}},
    {"disk full", NOT_LOADED, NOT_LOADED, {}, [](Rig &) { limit_files(64 * 1024); }},
    {"file not writable", NOT_LOADED, NOT_LOADED, {}, take_file_names},
    {"file names are links", FLASHED, FLASHED, {}, leave_links},
    {"file names are FIFOs", FLASHED, FLASHED, {}, leave_fifos},
    {"file of the device", NOT_LOADED, NOT_LOADED, {}, [](Rig &r) { r.firmware.url = "file:///etc/passwd"; }},
    {"other scheme", NOT_LOADED, NOT_LOADED, {}, [](Rig &r) { r.firmware.url = "ftp://127.0.0.1/x"; }},
    {"http 404", WRONG_DIGEST, WRONG_SIZE, {.status = 404, .body = "<html>"}},
    {"http 500", WRONG_DIGEST, WRONG_SIZE, {.status = 500, .body = "<html>"}},
    {"one byte more", WRONG_DIGEST, WRONG_SIZE, {.wrong_size = true}},
    {"byte changed", WRONG_DIGEST, WRONG_DIGEST, {.wrong_md5 = true}},
    {"other digest announced", WRONG_DIGEST, WRONG_DIGEST, {}, [](Rig &r) { r.firmware.md5 = "0123"; }},
    {"no digest announced", WRONG_DIGEST, WRONG_DIGEST, {}, [](Rig &r) { r.firmware.md5 = ""; }},
    {"upper-case digest", FLASHED, FLASHED, {}, [](Rig &r) { r.firmware.md5 = UPPER_MD5; }},
    {"other size announced", FLASHED, WRONG_SIZE, {}, [](Rig &r) { r.firmware.wrong_size = true; }},
    {"no address", NOT_LOADED, NOT_OFFERED, {}, [](Rig &r) { r.firmware.url = ""; }},
    {"no version", FLASHED, NOT_OFFERED, {}, [](Rig &r) { r.firmware.version = ""; }},
    {"flash refused", REFUSED, REFUSED, {}, refuse_to_flash},
};

// Puts one way through the cases; `ends` are what it comes to, by outcome.
void expect_all(const std::string &image, std::string (Rig::*upgrade)(), Outcome Case::*by_way,
                const std::vector<std::string> &ends) {
    const std::string request = R"({"downurl":"/tmp/)" + image + R"(","isreboot":1})";
    Rig rig;
    for (const Case &row : CASES)
        for (const Case &c : {row, CASES[0]}) { // the next one is none the worse for it
            SCOPED_TRACE(std::string(c.name) + " of " + row.name);
            const Outcome outcome = c.*by_way;
            rig.repair();
            c.arrange(rig);
            cloudsim::Fault fault = c.fault;
            fault.endpoint = "firmware";
            if (!fault.drop) fault.count = 0; // until cleared
            rig.cloud.fault(fault);
            moving_clock::clear_pauses();
            EXPECT_THAT((rig.*upgrade)(), MatchesRegex(ends[outcome]));
            std::vector<moving_clock::Millis> pauses = {60000, 120000, 180000};
            if (outcome != NOT_LOADED) pauses.resize(fault.drop ? static_cast<size_t>(fault.count) : 0);
            EXPECT_EQ(moving_clock::pauses(), pauses);
            const bool asked = outcome == FLASHED || outcome == REFUSED;
            EXPECT_EQ(rig.arguments("vrop", "upgrade"), std::vector(asked, request));
        }
    EXPECT_EQ(text_of(VICTIM), "kept");
}

TEST(Upgrade, BySdk) {
    const std::vector<std::string> ends = {
        " 10 60 80 100 0 upgrade ok, returns 0, keeps 1, image, log",
        " 10 60 80 -1 1 upgrade fail, returns -1, keeps 0, log",
        " 10 -3 1 download error, returns -?[1-9][0-9]*, keeps -1, log",
        "",
        " 10 60 -4 1 md5 error, returns 1, keeps -1, log",
    };
    expect_all("qvtk_upgrade.bin", &Rig::by_sdk, &Case::by_sdk, ends);
}

TEST(Upgrade, ByHttps) {
    const std::vector<std::string> ends = {
        " 50 , image, log",
        " 50  -5 upgrade fail! ret = -1, log",
        " -3 download fail, ret:[1-9][0-9]*",
        " 50  -2 size error, local size:[0-9]+, size:30720[01]",
        " 50  -2 MD5 error, local file MD5:[0-9a-f]{32}, recv MD5:[0-9a-f]*",
        ", log of before",
    };
    expect_all("firmware.img", &Rig::by_https, &Case::by_https, ends);
}

TEST(SdkUpgrade, DatagramsAndWhatIsMissing) {
    Rig rig;
    const std::string progress = R"({"action": "upgradeProgress", "progress": )",
                      result =
                          R"({"action": "deviceUpgrade", "mac":"A1:B2:C3:D4:E5:F6", "result": 1, "msg": ")";
    EXPECT_EQ(qvtkUpgrade_handle(rig.firmware.url->c_str(), nullptr, MAC, nullptr, nullptr), 1);
    EXPECT_THAT(rig.relay.take(),
                ElementsAre(progress + "10}", progress + "60}", progress + "-4}", result + "md5 error\"}"));
    EXPECT_EQ(qvtkUpgrade_handle(nullptr, IMAGE_MD5, MAC, nullptr, nullptr), 1);
    EXPECT_THAT(rig.relay.take(),
                ElementsAre(progress + "10}", progress + "-3}", result + "download error\"}"));
    upgrade_result(nullptr, nullptr, 1); // sent all the same
    EXPECT_THAT(rig.relay.take(), ElementsAre(R"({"action": "deviceUpgrade", "mac":"", "result": 1})"));
    EXPECT_THAT(rig.by_sdk(), HasSubstr("upgrade ok"));
    upgrade_progress(1); // the device restarts: nothing more is sent
    EXPECT_THAT(rig.relay.take(), IsEmpty());
}

TEST(Upgrade, NothingToLoadFromOrWith) {
    Rig rig;
    http_upgrading();
    EXPECT_EQ(rig.told_cloud(), " -3 download fail, ret:1");
    rig.repair();
    curl_spy.init_fails = true;
    EXPECT_EQ(rig.by_https(), ", log of before");
    EXPECT_TRUE(has_logged("#http upgrade# curl_easy_init error"));
    EXPECT_EQ(curl_download_file(NOBODY), 1);
    for (const char *digest : {IMAGE_MD5, ""}) {
        rig.firmware.md5 = digest;
        EXPECT_EQ(rig.by_sdk(), " 10 60 -4 1 md5 error, returns 1, keeps -1, log");
    }
    rig.repair();
    curl_spy.init_fails = false;
    EXPECT_EQ(rig.by_https(), " 50 , image, log");
}

TEST(HttpsUpgrade, ChecksEveryIntervalFromTheStartOfTheLastCheck) {
    Rig rig;
    auto checks_within = [&](int seconds) {
        rig.cloud.clear_requests();
        for (int i = 0; i < seconds; i++) {
            moving_clock::set(i % 2 * 1714550400); // the clock of the day is not asked
            http_upgrade_round(&rig.last_check);
            moving_clock::advance(1000);
        }
        return rig.cloud.requests().size();
    };
    EXPECT_EQ(checks_within(3600), 2U);
    rig.cloud.fault({.endpoint = "check-upgrade", .count = 4, .drop = true}); // a check of 30 seconds
    EXPECT_EQ(checks_within(1), 4U);
    EXPECT_EQ(checks_within(1800 - 31), 0U);
    EXPECT_EQ(checks_within(1), 1U);
    moving_clock::advance(INTERVAL);
    for (const auto &[interval, checks] : {std::pair{50, 2U}, {0, 100U}, {-7, 100U}}) {
        set_http_upgrade_check_interval(interval);
        EXPECT_EQ(checks_within(100), checks);
        EXPECT_TRUE(has_logged("#http upgrade# g_request_interval:" + std::to_string(interval)));
    }
}

TEST(HttpsUpgrade, AcceptedOfferIsNotCarriedOutAgainForTenMinutes) {
    Rig rig;
    set_http_upgrade_check_interval(0);
    EXPECT_EQ(rig.by_https(), " 50 , image, log");
    const Descriptor accepted(open("/aptmp/firmware.img", O_RDONLY));
    auto asked_within = [&](int seconds) {
        rig.router.clear_calls();
        for (int i = 0; i < seconds; i++) {
            moving_clock::advance(1000);
            http_upgrade_round(&rig.last_check);
        }
        return rig.arguments("vrop", "upgrade").size();
    };
    EXPECT_EQ(asked_within(599), 0U);
    EXPECT_EQ(asked_within(1), 1U);
    const std::string other(IMAGE_SIZE / 2, 'o');
    rig.cloud.offer({.name = "router.img", .image = other, .version = "V2.0.0"});
    EXPECT_EQ(asked_within(2), 1U); // another digest makes another offer
    EXPECT_EQ(text_of("/aptmp/firmware.img"), other);
    // and who has the first one open has it whole
    EXPECT_TRUE(text_of("/proc/self/fd/" + std::to_string(accepted.get())) == rig.firmware.image);
}

TEST(Upgrade, LinesGoToTheirLog) {
    Rig rig;
    rig.by_sdk();
    const std::string progress = R"(buf:{"action": "upgradeProgress", "progress": )";
    EXPECT_THAT(log_messages(upgrade_log()),
                ElementsAre(R"(buf:{"newversion": "V2.0.0", "strategy": "force"})", progress + "10}",
                            progress + "60}", progress + "80}", progress + "100}",
                            "download upgrade result:1"));
    rig.repair();
    rig.firmware.url = NOBODY;
    rig.by_https();
    std::vector<std::string> both, expected;
    for (const char *end :
         {"start retry", "retry count[1]", "retry count[2]", "retry count[3]", "exit retry"}) {
        both.push_back(std::string("#http upgrade# curl_download_file ret[7], ") + end);
        expected.insert(expected.end(), {both.back(), ""});
    }
    EXPECT_THAT(log_messages(), testing::IsSupersetOf(both));
    expected.emplace_back("report_upgrade_progress progress[-3], reason[download fail, ret:7]");
    EXPECT_EQ(log_messages(upgrade_log()), expected);
    for (const char *only_there : {"newversion", "upgradeProgress", "report_upgrade_progress progress"})
        EXPECT_THAT(main_log(), testing::Not(HasSubstr(only_there)));
}

} // namespace
