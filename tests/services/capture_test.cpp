// SPDX-License-Identifier: Apache-2.0
#include "services/capture.h"

#include <fstream>

#include <gmock/gmock.h>

#include "support/helper_stub.h"

namespace {

TEST(Capture, IsUploadedOnceTheCountdownIsOverWhileTheFileIsThere) {
    HelperStub helper("common_put_file");
    auto runs_of_round = [&] {
        capture_round();
        return helper.take_runs();
    };
    EXPECT_EQ(set_cap_config(2, "/tmp/cap.pcap", "https://host/cap"), 0);
    for (int round = 0; round < 3; round++)
        EXPECT_EQ(runs_of_round(), ""); // no file: the countdown stands
    std::ofstream("/tmp/cap.pcap") << "packets";
    EXPECT_EQ(runs_of_round() + runs_of_round(), "");
    EXPECT_EQ(runs_of_round(), "/tmp/cap.pcap\n");
    set_cap_config(0, "/tmp/cap.pcap", "https://host/cap");
    EXPECT_EQ(runs_of_round() + runs_of_round(), "/tmp/cap.pcap\n/tmp/cap.pcap\n");
    for (const auto &[seconds, address] : {std::pair{0, ""}, {-1, "https://host/cap"}}) {
        set_cap_config(seconds, "/tmp/cap.pcap", address);
        EXPECT_EQ(runs_of_round() + runs_of_round(), "");
    }
}

TEST(Capture, SettingsAreCutAndThePathIsOneWord) {
    char address[300] = "before";
    for (const char *path : {"/tmp/a b", "/tmp/a;reboot", "/tmp/$(reboot)", "/tmp/a\nb", "`x`"})
        EXPECT_EQ(set_cap_config(0, path, "https://host/"), -1) << path;
    EXPECT_EQ(get_cap_realurl(address, sizeof address), 0);
    EXPECT_STREQ(address, "");
    EXPECT_EQ(set_cap_config(0, nullptr, std::string(300, 'u').c_str()), 0);
    for (int size : {300, 4}) {
        EXPECT_EQ(get_cap_realurl(address, size), 0);
        EXPECT_EQ(address, std::string(size == 4 ? 3 : 255, 'u'));
    }
    EXPECT_EQ(get_cap_realurl(nullptr, 4), -1);
    EXPECT_EQ(get_cap_realurl(address, 0), -1);
}

} // namespace
