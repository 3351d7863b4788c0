// SPDX-License-Identifier: Apache-2.0
#include "https/upgrade.h"

#include <gmock/gmock.h>

#include "core/handles.h"
#include "core/json_path.h"
#include "https/firmware_rig.h"
#include "https/requests.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int RETRIES = 3;
const ImagePaths PATHS = {IMAGE_FILE, IMAGE_INSTALL_FILE};
const char FLASH_REQUEST[] = R"({"downurl":"/tmp/firmware.img","isreboot":1})";

// The progress reports that the cloud got: "progress reason".
std::vector<std::string> reports(const cloudsim::Cloud &cloud) {
    std::vector<std::string> texts;
    for (const cloudsim::Request &request : cloud.requests()) {
        if (request.path != cloudsim::upgrade_progress_path) continue;
        EXPECT_TRUE(request.verified) << request.verdict;
        JsonRoot body(json_tokener_parse(request.body.c_str()));
        texts.push_back(std::string(JsonGetStr(body.get(), "progress")) + " " +
                        JsonGetStr(body.get(), "reason"));
    }
    return texts;
}

std::vector<DownloadCase> https_cases() {
    std::vector<DownloadCase> cases = download_cases();
    cases.push_back({"good_on_last_try",
                     [](FirmwareRig &rig) {
                         cloudsim::Fault fault;
                         fault.endpoint = "firmware";
                         fault.count = RETRIES;
                         fault.reset = true;
                         rig.cloud.fault(fault);
                     },
                     Outcome::flashed, RETRIES});
    cases.push_back({"announced_size_wrong", [](FirmwareRig &rig) { rig.firmware.wrong_size = true; },
                     Outcome::wrong_size});
    cases.push_back({"no_address", [](FirmwareRig &rig) { rig.firmware.url = ""; }, Outcome::not_offered});
    return cases;
}

void expect_reports(const std::vector<std::string> &seen, Outcome outcome) {
    using testing::MatchesRegex;
    switch (outcome) {
    case Outcome::flashed:
        EXPECT_THAT(seen, ElementsAre("50 "));
        break;
    case Outcome::refused:
        EXPECT_THAT(seen, ElementsAre("50 ", "-5 upgrade fail! ret = -1"));
        break;
    case Outcome::not_downloaded:
        EXPECT_THAT(seen, ElementsAre(MatchesRegex("-3 download fail, ret:[1-9][0-9]*")));
        break;
    case Outcome::wrong_size:
        EXPECT_THAT(seen, ElementsAre("50 ", MatchesRegex("-2 size error, local size:[0-9]+, size:[0-9]+")));
        break;
    case Outcome::wrong_digest:
        EXPECT_THAT(
            seen, ElementsAre("50 ", MatchesRegex("-2 MD5 error, local file MD5:[0-9a-f]{32}, recv MD5:.*")));
        break;
    case Outcome::not_offered:
        EXPECT_THAT(seen, IsEmpty());
        break;
    }
}

class HttpsUpgrade : public testing::TestWithParam<DownloadCase> {};

TEST_P(HttpsUpgrade, ReportsAndHandsOverOnlyWhatWasChecked) {
    FirmwareRig rig(PATHS);
    const DownloadCase &c = GetParam();
    c.arrange(rig);
    rig.cloud.offer(rig.firmware);
    time_t last_check = http_upgrade_start();
    http_upgrade_round(&last_check);

    expect_reports(reports(rig.cloud), c.outcome);
    EXPECT_EQ(moving_clock::pauses(),
              download_pauses(c.outcome == Outcome::not_downloaded ? RETRIES : c.failed_tries));
    const bool asked = c.outcome == Outcome::flashed || c.outcome == Outcome::refused;
    EXPECT_EQ(rig.flash_requests(), asked && std::string(c.name) != "flash_unanswered"
                                        ? std::vector<std::string>{FLASH_REQUEST}
                                        : std::vector<std::string>{});
    if (std::string(c.name) != "file_not_writable") {
        EXPECT_EQ(rig.image_is_there(), c.outcome == Outcome::flashed);
    }
    EXPECT_EQ(upgrade_log().find("\"newversion\": \"V2.0.0\", \"strategy\": \"force\"") != std::string::npos,
              asked);

    // the next check, an interval later, is none the worse for it
    rig.repair();
    http_upgrade_round(&last_check);
    EXPECT_THAT(rig.cloud.requests(), IsEmpty());
    moving_clock::advance(1800 * 1000);
    http_upgrade_round(&last_check);
    EXPECT_THAT(reports(rig.cloud), ElementsAre("50 "));
    EXPECT_THAT(rig.flash_requests(), ElementsAre(FLASH_REQUEST));
}

INSTANTIATE_TEST_SUITE_P(Download, HttpsUpgrade, testing::ValuesIn(https_cases()), case_name);

TEST(HttpsUpgradeSteps, MissingAddressCountsAsFailedDownload) {
    FirmwareRig rig(PATHS);
    http_upgrade_start();
    http_upgrading();
    EXPECT_THAT(reports(rig.cloud), ElementsAre("-3 download fail, ret:1"));
    EXPECT_EQ(moving_clock::pauses(), download_pauses(RETRIES));
}

TEST(HttpsUpgradeSteps, LibraryThatCannotBeUsedReportsNothingAndLives) {
    FirmwareRig rig(PATHS);
    time_t last_check = http_upgrade_start();
    curl_spy::fail_init(true);
    http_upgrade_round(&last_check);
    EXPECT_THAT(rig.flash_requests(), IsEmpty());
    EXPECT_TRUE(has_logged("#http upgrade# curl_easy_init error"));
    EXPECT_EQ(curl_download_file("https://127.0.0.1:1/"), 1);
    curl_spy::fail_init(false);
    moving_clock::advance(1800 * 1000);
    http_upgrade_round(&last_check);
    EXPECT_THAT(rig.flash_requests(), ElementsAre(FLASH_REQUEST));
}

TEST(HttpsUpgradeSteps, ChecksEveryIntervalFromTheStartOfTheLastCheck) {
    FirmwareRig rig(PATHS);
    rig.cloud.withdraw();
    time_t last_check = http_upgrade_start();
    auto checks_within = [&](int seconds) {
        rig.cloud.clear_requests();
        for (int i = 0; i < seconds; i++) {
            http_upgrade_round(&last_check);
            moving_clock::advance(1000);
        }
        return rig.cloud.requests().size();
    };
    EXPECT_EQ(checks_within(1800), 1U);
    EXPECT_EQ(checks_within(1800), 1U);
    set_http_upgrade_check_interval(10);
    EXPECT_EQ(checks_within(100), 10U);
    set_http_upgrade_check_interval(0);
    EXPECT_EQ(checks_within(5), 5U);
    set_http_upgrade_check_interval(-7);
    EXPECT_EQ(checks_within(5), 5U);
    EXPECT_TRUE(has_logged("#http upgrade# g_request_interval:-7"));
}

} // namespace
