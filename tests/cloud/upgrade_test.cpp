// SPDX-License-Identifier: Apache-2.0
#include "cloud/upgrade.h"

#include <gmock/gmock.h>

#include "cloud/firmware.h"
#include "https/event_catcher.h"
#include "https/firmware_rig.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr int TRIES = 3;
constexpr char MAC[] = "A1:B2:C3:D4:E5:F6";
const ImagePaths PATHS = {"/aptmp/qvtk_upgrade.bin", "/tmp/qvtk_upgrade.bin"};
const char FLASH_REQUEST[] = R"({"downurl":"/tmp/qvtk_upgrade.bin","isreboot":1})";

std::string progress(int value) {
    return "{\"action\": \"upgradeProgress\", \"progress\": " + std::to_string(value) + "}";
}

std::string result(int value, const std::string &message) {
    return std::string("{\"action\": \"deviceUpgrade\", \"mac\":\"") + MAC +
           "\", \"result\": " + std::to_string(value) + ", \"msg\": \"" + message + "\"}";
}

std::vector<std::string> expected_events(Outcome outcome) {
    switch (outcome) {
    case Outcome::flashed:
        return {progress(10), progress(60), progress(80), progress(100), result(0, "upgrade ok")};
    case Outcome::refused:
        return {progress(10), progress(60), progress(80), progress(-1), result(1, "upgrade fail")};
    case Outcome::not_downloaded:
        return {progress(10), progress(-3), result(1, "download error")};
    default:
        return {progress(10), progress(60), progress(-4), result(1, "md5 error")};
    }
}

int upgrade(const FirmwareRig &rig) {
    return qvtkUpgrade_handle(rig.url().c_str(), rig.md5().c_str(), MAC, "V2.0.0", "force");
}

class SdkUpgrade : public testing::TestWithParam<DownloadCase> {};

TEST_P(SdkUpgrade, ReportsAndHandsOverOnlyWhatWasChecked) {
    FirmwareRig rig(PATHS);
    EventCatcher relay{128};
    const DownloadCase &c = GetParam();
    c.arrange(rig);
    int returned = upgrade(rig);

    EXPECT_THAT(relay.take(), ElementsAreArray(expected_events(c.outcome)));
    EXPECT_EQ(returned == 0, c.outcome == Outcome::flashed);
    EXPECT_EQ(moving_clock::pauses(),
              download_pauses(c.outcome == Outcome::not_downloaded ? TRIES : c.failed_tries));
    const bool asked = c.outcome == Outcome::flashed || c.outcome == Outcome::refused;
    EXPECT_EQ(rig.flash_requests(), asked && std::string(c.name) != "flash_unanswered"
                                        ? std::vector<std::string>{FLASH_REQUEST}
                                        : std::vector<std::string>{});
    if (c.outcome == Outcome::wrong_size || c.outcome == Outcome::wrong_digest) {
        EXPECT_FALSE(rig.image_is_there());
    }
    EXPECT_EQ(qvtk_get_download_upgrade_result(), c.outcome == Outcome::flashed ? 1 : asked ? 0 : -1);
    EXPECT_NE(upgrade_log().find("buf:{\"newversion\": \"V2.0.0\", \"strategy\": \"force\"}"),
              std::string::npos);

    if (c.outcome == Outcome::flashed) { // the device restarts: nothing more is sent
        upgrade_progress(1);
        EXPECT_THAT(relay.take(), IsEmpty());
    }
    rig.repair();
    creat_event_client();
    EXPECT_EQ(upgrade(rig), 0);
    EXPECT_THAT(relay.take(), ElementsAreArray(expected_events(Outcome::flashed)));
    EXPECT_THAT(rig.flash_requests(), ElementsAre(FLASH_REQUEST));
}

INSTANTIATE_TEST_SUITE_P(Download, SdkUpgrade, testing::ValuesIn(download_cases()), case_name);

TEST(SdkUpgradeEdges, MissingTextsAndLibrary) {
    FirmwareRig rig(PATHS);
    EventCatcher relay{128};
    const std::string url = rig.url(), md5 = rig.md5();
    const struct {
        const char *url, *md5;
        bool library;
        Outcome outcome;
    } cases[] = {
        {nullptr, md5.c_str(), true, Outcome::not_downloaded},
        {"", md5.c_str(), true, Outcome::not_downloaded},
        {url.c_str(), nullptr, true, Outcome::wrong_digest},
        {url.c_str(), md5.c_str(), false, Outcome::wrong_digest},
        {url.c_str(), "", false, Outcome::wrong_digest},
    };
    for (const auto &c : cases) {
        curl_spy::fail_init(!c.library);
        EXPECT_NE(qvtkUpgrade_handle(c.url, c.md5, MAC, nullptr, nullptr), 0);
        EXPECT_THAT(relay.take(), ElementsAreArray(expected_events(c.outcome)));
        EXPECT_THAT(rig.flash_requests(), IsEmpty());
    }
    upgrade_result(nullptr, nullptr, 1); // sent all the same
    EXPECT_THAT(relay.take(), ElementsAre("{\"action\": \"deviceUpgrade\", \"mac\":\"\", \"result\": 1}"));
}

TEST(SdkUpgradeEdges, DownloadOptions) {
    FirmwareRig rig(PATHS);
    EventCatcher relay{128};
    curl_spy::clear();
    upgrade(rig);
    EXPECT_THAT(curl_spy::options(), testing::UnorderedElementsAre(
                                         "URL=" + rig.url(), "SSL_VERIFYPEER=0", "SSL_VERIFYHOST=0",
                                         "WRITEDATA=set", "TIMEOUT=600", "CONNECTTIMEOUT=60", "NOSIGNAL=1"));
}

} // namespace
