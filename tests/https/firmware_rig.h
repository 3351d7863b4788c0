// SPDX-License-Identifier: Apache-2.0
// A router and a cloud that offers it an image, and the ways in which loading that image goes: both upgrades
// are put through the same ones.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "https/curl_spy.h"
#include "sim/cloud/cloud.h"
#include "support/moving_clock.h"
#include "support/router_rig.h"

// Where the download is written, and the name under which the flasher finds it.
struct ImagePaths {
    std::string written, handed_over;
};

class FirmwareRig {
  public:
    explicit FirmwareRig(const ImagePaths &paths);

    // What is announced, when it is not what is true.
    cloudsim::Firmware firmware;
    std::string url() const;
    std::string md5() const;

    // The messages of the flash requests since the last call.
    std::vector<std::string> flash_requests();
    bool image_is_there() const;
    // Puts everything right for the next attempt.
    void repair();

    ImagePaths paths;
    RouterRig rig;
    cloudsim::Cloud cloud;
};

enum class Outcome { flashed, refused, not_downloaded, wrong_size, wrong_digest, not_offered };

struct DownloadCase {
    const char *name;
    void (*arrange)(FirmwareRig &rig);
    Outcome outcome;
    int failed_tries = 0; // before the last one; all of them when the outcome is not_downloaded
};
std::ostream &operator<<(std::ostream &out, const DownloadCase &c);
std::string case_name(const testing::TestParamInfo<DownloadCase> &row);

// Cases of both upgrades.
std::vector<DownloadCase> download_cases();

// The pauses after the first `count` failed downloads, in milliseconds.
std::vector<moving_clock::Millis> download_pauses(int count);
