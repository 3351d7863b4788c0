// SPDX-License-Identifier: Apache-2.0
// The functions behind the Wi-Fi settings that need no daemon.
#include <string>

#include <gtest/gtest.h>

#include "properties/wifi_guest.h"

namespace {

// Names of every length with characters of 1 to 4 bytes at every place in front of the end.
TEST(Helpers, GuestNamesAreCutBetweenCharacters) {
    for (const std::string character : {"a", "\u00fc", "\u4e2d", "\U0001f600"}) {
        for (size_t ascii = 0; ascii <= 32; ++ascii) {
            for (size_t tail = 0; ascii + tail <= 32; ++tail) {
                const std::string name = std::string(ascii, 'x') + character + std::string(tail, 'y');
                SCOPED_TRACE(name);
                const int cut = get_vistor_cut_ssid(name.c_str()), length = static_cast<int>(name.size());
                const int lost = (length < 26 ? length : length - 6) - cut;
                EXPECT_GE(lost, 0);
                EXPECT_LT(lost, length < 26 ? 1 : static_cast<int>(character.size()));
                EXPECT_NE(name[static_cast<size_t>(cut)] & 0xC0, 0x80) << "splits a character";
            }
        }
    }
    EXPECT_EQ(get_vistor_cut_ssid(std::string(32, '\x80').c_str()), 26) << "no UTF-8, no character";
}

} // namespace
