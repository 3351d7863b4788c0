// SPDX-License-Identifier: Apache-2.0
// Both ways of upgrading at once, in every pairing: what the router is handed is the image that was checked.
#include <array>
#include <atomic>
#include <functional>
#include <latch>
#include <thread>

#include <gmock/gmock.h>

#include "core/log.h"
#include "core/text.h"
#include "https/requests.h"
#include "https/transfer.h"
#include "sim/cloud/signature.h"
#include "support/cloud_rig.h"
#include "support/text_file.h"
#include "upgrade/firmware.h"
#include "upgrade/https_upgrade.h"
#include "upgrade/sdk_upgrade.h"
#include "upgrade/upgrade_report.h"

namespace {

constexpr int ROUNDS = 50;
constexpr size_t IMAGE_SIZE = 100 * 1024;
constexpr const char *IMAGES[] = {"qvtk_upgrade.bin", "firmware.img"};

struct Offer {
    std::string version, image, md5, url;
};

// What became of an offer.
struct Outcome {
    const Offer *offer;
    std::string path; // handed over, empty when it was not
    int answer = -1;  // of the router
};

thread_local Outcome *mine = nullptr; // of the offer that this thread carries out
std::atomic<int> begun;               // offers of the round

} // namespace

// The hand-over of both ways, which looks into the file before and after the router does.
int real_start_upgrade(const char *path) __asm__("__real__Z13start_upgradePKc");
int wrapped_start_upgrade(const char *path) __asm__("__wrap__Z13start_upgradePKc");
int wrapped_start_upgrade(const char *path) {
    while (begun < 2) // so that the other is there
        std::this_thread::yield();
    EXPECT_EQ(cloudsim::md5_hex(text_of(path)), mine->offer->md5);
    mine->path = path;
    mine->answer = real_start_upgrade(path);
    EXPECT_EQ(cloudsim::md5_hex(text_of(path)), mine->offer->md5);
    return mine->answer;
}

namespace {

void by_sdk(const Offer &offer) {
    const int result =
        qvtkUpgrade_handle(offer.url.c_str(), offer.md5.c_str(), "mac", offer.version.c_str(), "1");
    EXPECT_EQ(result, mine->path.empty() ? UPGRADE_SUPERSEDED : mine->answer);
}

void by_https(const Offer &) {
    http_upgrading();
}

// What the last check was answered; both offers of the HTTPS way are this one.
void answer_check(const Offer &offer) {
    auto &response = upgrade_request.response;
    copy_text(response.version, offer.version.c_str());
    copy_text(response.md5, offer.md5.c_str());
    copy_text(response.url, offer.url.c_str());
    copy_text(response.strategy, "1");
    response.size = static_cast<int64_t>(offer.image.size());
}

struct Pairing {
    const char *name;
    void (*first)(const Offer &), (*second)(const Offer &);
};

void PrintTo(const Pairing &pairing, std::ostream *out) {
    *out << pairing.name;
}

struct Turns : CloudRig, testing::TestWithParam<Pairing> {
    Turns() {
        init_transfers();
        for (const std::string image : IMAGES)
            symlink(("/aptmp/" + image).c_str(), ("/tmp/" + image).c_str()); // as on the device
        router.set_state("/sim/restartdelay", "3600000");
        load_upgrade_request();
    }

    Offer offer(const std::string &version) {
        Offer made = {version, version + std::string(IMAGE_SIZE, version[0]), "", ""};
        made.md5 = cloudsim::md5_hex(made.image);
        made.url = cloud.url(cloud.add_backup(version, made.image));
        return made;
    }

    // Carries out both at once.
    static void run(std::array<Outcome, 2> &outcomes) {
        begun = 0;
        std::latch start(2);
        auto carry_out = [&](Outcome *outcome, void (*way)(const Offer &)) {
            mine = outcome;
            start.arrive_and_wait();
            begun++;
            way(*outcome->offer);
        };
        const std::jthread first(carry_out, &outcomes[0], GetParam().first);
        const std::jthread second(carry_out, &outcomes[1], GetParam().second);
    }

    // What is left is the work of the one that was accepted.
    static void expect_left_by(const Outcome &accepted) {
        EXPECT_TRUE(text_of(accepted.path) == accepted.offer->image);
        char version[128], strategy[32];
        EXPECT_EQ(get_upgrade_info(UPGRADE_LOG, version, strategy, sizeof version, sizeof strategy), 0);
        EXPECT_EQ(version, accepted.offer->version);
    }
};

TEST_P(Turns, TwoAtOnce) {
    int refused = 0;
    for (int round = 0; round < ROUNDS; round++) {
        SCOPED_TRACE(round);
        const Offer one = offer("a" + std::to_string(round)), other = offer("b" + std::to_string(round));
        answer_check(other);
        const bool by_https_alone = GetParam().first == by_https;
        std::array<Outcome, 2> outcomes = {{{by_https_alone ? &other : &one, ""}, {&other, ""}}};
        // in every other round the router refuses the first image, and the second gets its turn
        const bool refuses = round % 2 == 1;
        if (refuses)
            router.add_fault({.kind = router::Fault::Kind::Result,
                              .object = "vrop",
                              .method = "upgrade",
                              .value = 2,
                              .count = 1});
        run(outcomes);
        const bool both = !outcomes[0].path.empty() && !outcomes[1].path.empty();
        EXPECT_EQ((outcomes[0].answer == 0) + (outcomes[1].answer == 0), both && !refuses ? 2 : 1);
        EXPECT_TRUE(both || !refuses);
        if (!both) refused++;
        if (!both || refuses) expect_left_by(outcomes[0].answer == 0 ? outcomes[0] : outcomes[1]);
        delete_upgrade_log();
    }
    EXPECT_GT(refused, 0); // nearly all of the others
}

INSTANTIATE_TEST_SUITE_P(Pairings, Turns,
                         testing::Values(Pairing{"SdkSdk", by_sdk, by_sdk},
                                         Pairing{"SdkHttps", by_sdk, by_https},
                                         Pairing{"HttpsHttps", by_https, by_https}),
                         [](const auto &row) { return row.param.name; });

} // namespace
