// SPDX-License-Identifier: Apache-2.0
// The functions behind the properties that need no daemon, and the ones that refuse what they are given.
#include <cstring>

#include <gtest/gtest.h>

#include "core/text.h"
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

TEST(Helpers, EncryptionCodes) {
    const char *const TEXTS[] = {"NONE",     "WPA-PSK",          "WPA2-PSK", "WPA-PSK/WPA2-PSK",
                                 "WPA3-SAE", "WPA2-PSK/WPA3-SAE"};
    char text[32];
    for (int code = 0; code < 6; ++code) {
        EXPECT_EQ(get_report_encrytion(TEXTS[code]), code);
        EXPECT_EQ(get_set_encrytion(code, text, sizeof text), 0);
        EXPECT_STREQ(text, TEXTS[code]);
    }
    for (const char *unknown : {"", "wpa2-psk", "WPA2-PSK ", "SAE"})
        EXPECT_EQ(get_report_encrytion(unknown), 3) << unknown;
    EXPECT_EQ(get_report_encrytion(nullptr), -1);
    for (int code : {6, 1000, -1}) {
        get_set_encrytion(code, text, sizeof text);
        EXPECT_STREQ(text, "WPA-PSK/WPA2-PSK") << code;
    }
    get_set_encrytion(3, text, 4);
    EXPECT_STREQ(text, "WPA");
    EXPECT_EQ(get_set_encrytion(3, nullptr, 4), -1);
    EXPECT_EQ(get_set_encrytion(3, text, 0), -1);
}

// Names of every length to 32 bytes whose end is made of characters of 1 to 4 bytes.
TEST(Helpers, GuestNamesAreCutBetweenCharacters) {
    for (const std::string character : {"a", "\u00fc", "\u4e2d", "\U0001f600"}) {
        for (size_t ascii = 0; ascii <= 32; ++ascii) {
            std::string name(ascii, 'x');
            while (name.size() + character.size() <= 32)
                name += character;
            for (size_t tail = name.size(); tail <= 32; ++tail, name += 'y') {
                const int cut = get_vistor_cut_ssid(name.c_str());
                SCOPED_TRACE(name);
                if (name.size() < 26) {
                    EXPECT_EQ(cut, static_cast<int>(name.size()));
                    continue;
                }
                const int room = static_cast<int>(name.size()) - 6;
                EXPECT_LE(cut, room);
                EXPECT_GT(cut, room - static_cast<int>(character.size()))
                    << "no more than one character is lost";
                EXPECT_NE(name[static_cast<size_t>(cut)] & 0xC0, 0x80) << "splits a character";
            }
        }
    }
    EXPECT_EQ(get_vistor_cut_ssid(nullptr), -1);
    EXPECT_EQ(get_vistor_cut_ssid(std::string(32, '\x80').c_str()), 26) << "no UTF-8, no character";
}

TEST(Helpers, WeekBits) {
    struct Week {
        int32_t days[DAYS];
        int32_t week;
        bool reads_back;
    };
    for (const Week &c : {Week{{1, 1, 1, 1, 1, 0, 0}, 0x3E, true}, Week{{0, 0, 0, 0, 0, 0, 1}, 0x01, true},
                          Week{{0, 0, 0, 0, 0, 1, 1}, 0x41, true}, Week{{2, 0, 0, 0, 0, 0, 0}, 0x04, false},
                          Week{{-1, 0, 0, 0, 0, 0, 0}, 0xFE, false},
                          Week{{0, 0, 0, 0, 0, INT32_MAX, INT32_MIN}, 0xC0, false}}) {
        EXPECT_EQ(week_from_days(c.days), c.week);
        int32_t days[DAYS];
        days_from_week(c.week, days);
        EXPECT_EQ(memcmp(days, c.days, sizeof days) == 0, c.reads_back) << c.week;
    }
}

TEST(Helpers, TimesOfDay) {
    struct Time {
        const char *text;
        int32_t seconds; // 7 when it cannot be read
        const char *again;
    };
    for (const Time &c :
         {Time{"3:00", 10800, "03:00"}, Time{"23:59", 86340, "23:59"}, Time{"7:05", 25500, "07:05"},
          Time{"00:00", 0, "00:00"}, Time{"123:4", 7, nullptr}, Time{"x", 7, nullptr}, Time{"12", 7, nullptr},
          Time{"", 7, nullptr}, Time{nullptr, 7, nullptr}}) {
        int32_t seconds = 7;
        EXPECT_EQ(get_timeStamp(c.text, &seconds), c.again != nullptr ? 0 : -1);
        EXPECT_EQ(seconds, c.seconds);
        char text[16] = "";
        if (c.again != nullptr) {
            EXPECT_EQ(timeStatmp_to_point(seconds, text, sizeof text), 0);
            EXPECT_STREQ(text, c.again);
        }
    }
    char text[4] = "";
    EXPECT_EQ(timeStatmp_to_point(86340, text, sizeof text), 0);
    EXPECT_STREQ(text, "23:");
    EXPECT_EQ(timeStatmp_to_point(-1, text, sizeof text), -1);
    EXPECT_EQ(timeStatmp_to_point(0, nullptr, 4), -1);
}

TEST(Helpers, TimeFrames) {
    struct Frame {
        const char *text, *start, *end; // start null: no frame
    };
    for (const Frame &c :
         {Frame{"22:30-06:00", "22:30", "06:00"}, Frame{"-", "", ""}, Frame{"1-2-3", "1", "2-3"},
          Frame{"123456789-123456789", "1234567", "1234567"}, Frame{"22:30", nullptr, nullptr},
          Frame{"0123456789012345678901234567890-1", nullptr, nullptr}, Frame{nullptr, nullptr, nullptr}}) {
        char start[8] = "", end[8] = "";
        EXPECT_EQ(cut_timeLed_timeFrame(c.text, start, end), c.start != nullptr ? 0 : -1);
        if (c.start == nullptr) continue;
        EXPECT_STREQ(start, c.start);
        EXPECT_STREQ(end, c.end);
    }
    EXPECT_EQ(cut_dns("1.1.1.1,2.2.2.2"), 1);
    EXPECT_EQ(cut_dns("1.1.1.1"), 0);
    EXPECT_EQ(cut_dns(nullptr), -1);
}

// No bus here: what is refused is refused before anything is called.
TEST(Helpers, RefuseWhatTheyCannotUse) {
    WifiSenior senior{};
    RadioEncryption encryption{};
    GuestAccess access{};
    int32_t number = 0;
    const int RESULTS[] = {
        get_deviceInfo_conf(nullptr),
        get_deviceStatus_config(nullptr),
        get_device_speed(nullptr, &number),
        get_wifi_config(nullptr),
        set_wifi_config(nullptr, "wan0"),
        get_wifi_hidden(2),
        set_encrytion_and_hidden(-1, 0, 0),
        set_encrytion_and_hidden(2, 0, 0),
        set_encrytion_and_hidden(0, 0, -1),
        get_wifisenior_config(2, &encryption),
        set_wifisenior_config(0, nullptr),
        get_wifi_vistor_enable(2, &access),
        get_network_config(nullptr),
        get_visitorWifi_config(nullptr),
        get_mesh_config(nullptr),
        wifi_senior_config_get(0, nullptr),
        wifi_senior_config_get(2, &senior),
        wifi_senior_config_set(2, &senior),
        wifi_senior_config_set(0, nullptr),
        add_one_timeReboot(nullptr),
        modify_one_timeReboot(nullptr),
        add_one_timeLed(nullptr),
        modify_one_timeLed(nullptr),
        get_task_status(nullptr, &number),
        get_task_status("ToReboot", nullptr),
    };
    for (size_t i = 0; i < std::size(RESULTS); ++i)
        EXPECT_EQ(RESULTS[i], -1) << i;
}

} // namespace
