// SPDX-License-Identifier: Apache-2.0
// The functions behind the properties that need no daemon, and the ones that refuse what they are given.
#include <string>

#include <gmock/gmock.h>

#include "properties/device_info.h"
#include "properties/device_status.h"
#include "properties/mesh.h"
#include "properties/network_wan.h"
#include "properties/schedule.h"
#include "properties/time_led.h"
#include "properties/time_reboot.h"
#include "properties/visitor_wifi.h"
#include "properties/wifi_apply.h"
#include "properties/wifi_encryption.h"
#include "properties/wifi_guest.h"
#include "properties/wifi_info.h"
#include "properties/wifi_radio.h"
#include "properties/wifi_senior.h"

namespace {

using testing::Each;

TEST(Helpers, EncryptionCodes) {
    const char *const TEXTS[] = {"NONE",     "WPA-PSK",          "WPA2-PSK", "WPA-PSK/WPA2-PSK",
                                 "WPA3-SAE", "WPA2-PSK/WPA3-SAE"};
    char text[32];
    for (const int code : {0, 1, 2, 3, 4, 5, 6, 1000, -1}) {
        const int known = code < 0 || code > 5 ? 3 : code;
        EXPECT_EQ(get_set_encrytion(code, text, sizeof text), 0);
        EXPECT_STREQ(text, TEXTS[known]);
        EXPECT_EQ(get_report_encrytion(text), known);
    }
}

// Names of every length to 32 bytes whose end is made of characters of 1 to 4 bytes.
TEST(Helpers, GuestNamesAreCutBetweenCharacters) {
    for (const std::string character : {"a", "\u00fc", "\u4e2d", "\U0001f600"}) {
        for (size_t ascii = 0; ascii <= 32; ++ascii) {
            std::string name(ascii, 'x');
            while (name.size() + character.size() <= 32)
                name += character;
            for (; name.size() <= 32; name += 'y') {
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

// No bus here: what is refused is refused before anything is called.
TEST(Helpers, RefuseWhatTheyCannotUse) {
    WifiSenior senior{};
    RadioEncryption encryption{};
    GuestAccess access{};
    int32_t number = 0;
    char text[8], start[8], end[8];
    // clang-format off
    const int results[] = {
        get_deviceInfo_conf(nullptr), get_deviceStatus_config(nullptr), get_device_speed(nullptr, &number),
        get_wifi_config(nullptr), set_wifi_config(nullptr, "wan0"), get_wifi_hidden(2),
        set_encrytion_and_hidden(-1, 0, 0), set_encrytion_and_hidden(2, 0, 0), set_encrytion_and_hidden(0, 0, -1),
        get_wifisenior_config(2, &encryption), set_wifisenior_config(0, nullptr), get_wifi_vistor_enable(2, &access),
        wifi_senior_config_get(0, nullptr), wifi_senior_config_get(2, &senior),
        wifi_senior_config_set(0, nullptr), wifi_senior_config_set(2, &senior),
        get_network_config(nullptr), get_visitorWifi_config(nullptr), get_mesh_config(nullptr),
        add_one_timeReboot(nullptr), modify_one_timeReboot(nullptr), add_one_timeLed(nullptr), modify_one_timeLed(nullptr),
        get_task_status(nullptr, &number), get_task_status("ToReboot", nullptr), cut_dns(nullptr),
        get_report_encrytion(nullptr), get_set_encrytion(3, nullptr, 4), get_set_encrytion(3, text, 0),
        get_vistor_cut_ssid(nullptr), cut_timeLed_timeFrame(nullptr, start, end),
        timeStatmp_to_point(-1, text, sizeof text), timeStatmp_to_point(0, nullptr, 4),
    };
    // clang-format on
    EXPECT_THAT(results, Each(-1));
}

} // namespace
