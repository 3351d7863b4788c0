// SPDX-License-Identifier: Apache-2.0
// Both ways of upgrading at once, in every pairing: what the router is handed is the image that was checked.
#include <array>
#include <atomic>
#include <latch>
#include <thread>

#include <gmock/gmock.h>

#include "core/log.h"
#include "core/text.h"
#include "https/requests.h"
#include "https/transfer.h"
#include "sim/cloud/signature.h"
#include "sim/router/faults.h"
#include "sim/router/images.h"
#include "support/cloud_rig.h"
#include "support/text_file.h"
#include "upgrade/firmware.h"
#include "upgrade/https_upgrade.h"
#include "upgrade/sdk_upgrade.h"
#include "upgrade/upgrade_report.h"

namespace {

constexpr int ROUNDS = 50;
constexpr size_t IMAGE_SIZE = 100 * 1024;

// An offer of new firmware and what became of it.
struct Offer {
    std::string version, image, md5, url;
    std::string path = {}; // handed over, empty when it was not
    int answer = -1;       // of the router
};

thread_local Offer *mine = nullptr; // that this thread carries out
std::atomic<int> begun;             // offers of the round

} // namespace

// The hand-over of both ways, which looks into the file before and after the router does.
int real_start_upgrade(const char *path) __asm__("__real__Z13start_upgradePKc");
int wrapped_start_upgrade(const char *path) __asm__("__wrap__Z13start_upgradePKc");
int wrapped_start_upgrade(const char *path) {
    while (begun < 2) // so that the other is there
        std::this_thread::yield();
    EXPECT_EQ(cloudsim::md5_hex(text_of(path)), mine->md5);
    mine->path = path;
    mine->answer = real_start_upgrade(path);
    EXPECT_EQ(cloudsim::md5_hex(text_of(path)), mine->md5);
    return mine->answer;
}

namespace {

void by_sdk(const Offer &offer) {
    const int result =
        qvtkUpgrade_handle(offer.url.c_str(), offer.md5.c_str(), "mac", offer.version.c_str(), "1");
    EXPECT_EQ(result, offer.path.empty() ? UPGRADE_SUPERSEDED : offer.answer);
}

void by_https(const Offer &) {
    http_upgrading();
}

using Way = void (*)(const Offer &);

struct Turns : CloudRig, testing::Test {
    Turns() {
        init_transfers();
        EXPECT_TRUE(router::share_images());
        router.set_state("/sim/restartdelay", "3600000");
        load_upgrade_request();
    }

    // Also what the last check was answered, so that two offers of the HTTPS way are one and the same.
    Offer offer(const std::string &version) {
        Offer made = {version, version + std::string(IMAGE_SIZE, version[0]), "", ""};
        made.md5 = cloudsim::md5_hex(made.image);
        made.url = cloud.url(cloud.add_backup(version, made.image));
        auto &response = upgrade_request.response;
        copy_text(response.version, made.version.c_str());
        copy_text(response.md5, made.md5.c_str());
        copy_text(response.url, made.url.c_str());
        copy_text(response.strategy, "1");
        response.size = static_cast<int64_t>(made.image.size());
        return made;
    }

    // Carries out both at once.
    static void run(std::array<Offer, 2> &offers, Way one, Way other) {
        begun = 0;
        std::latch start(2);
        auto carry_out = [&](Offer *offer, Way way) {
            mine = offer;
            start.arrive_and_wait();
            begun++;
            way(*offer);
        };
        const std::jthread first(carry_out, &offers[0], one);
        const std::jthread second(carry_out, &offers[1], other);
    }

    // What is left is the work of the one that was accepted.
    static void expect_left_by(const Offer &accepted) {
        EXPECT_TRUE(text_of(accepted.path) == accepted.image);
        char version[128], strategy[32];
        EXPECT_EQ(get_upgrade_info(UPGRADE_LOG, version, strategy, sizeof version, sizeof strategy), 0);
        EXPECT_EQ(version, accepted.version);
    }

    void expect_turns(Way one, Way other);
};

void Turns::expect_turns(Way one, Way other) {
    int refused = 0;
    for (int round = 0; round < ROUNDS; round++) {
        SCOPED_TRACE(round);
        std::array<Offer, 2> offers = {offer("a" + std::to_string(round)),
                                       offer("b" + std::to_string(round))};
        if (one == by_https) offers[0] = offers[1];
        // in every other round the router refuses the first image, and the second gets its turn
        const bool refuses = round % 2 == 1;
        if (refuses) router.add_fault(router::parse_fault("result=2 vrop upgrade 1"));
        run(offers, one, other);
        const bool both = !offers[0].path.empty() && !offers[1].path.empty();
        EXPECT_EQ((offers[0].answer == 0) + (offers[1].answer == 0), both && !refuses ? 2 : 1);
        EXPECT_TRUE(both || !refuses);
        if (!both) refused++;
        if (!both || refuses) expect_left_by(offers[0].answer == 0 ? offers[0] : offers[1]);
        delete_upgrade_log();
    }
    EXPECT_GT(refused, 0); // nearly all of the others
}

TEST_F(Turns, TwoBySdk) {
    expect_turns(by_sdk, by_sdk);
}
TEST_F(Turns, OneEachWay) {
    expect_turns(by_sdk, by_https);
}
TEST_F(Turns, TwoByHttps) {
    expect_turns(by_https, by_https);
}

} // namespace
