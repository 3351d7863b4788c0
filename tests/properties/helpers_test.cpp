// SPDX-License-Identifier: Apache-2.0
// Functions that no slot of the property table calls by itself.
#include <string>

#include "core/bus.h"
#include "properties/mesh.h"
#include "properties/property_rig.h"
#include "properties/time_led.h"
#include "properties/time_reboot.h"
#include "properties/wifi_guest.h"
#include "properties/wifi_radio.h"

namespace {

// What is kept for others to call sends what it is for.
TEST(Helpers, KeptEntryPointsSendTheirMessage) {
    const struct {
        int (*call)();
        Texts writes;
    } kept[] = {
        {start_mesh, {"vrop.mesh connect {}"}},
        {[] { return set_wifi_wifi5Backup(1); }, {R"(vrop.wifi set {"wifi5backup":1})"}},
        {[] { return set_wifi_use2_4gpwd(1); }, {R"(vrop.wifi set {"use2_4gpwd":1})"}},
        {get_taskId, {}},
        {update_taskId, {}},
        {delete_timeReboot_config, {R"(vrop.timer delete {"action":"ToReboot","taskid":-1111})"}},
        {delete_timeLed_config, {R"(vrop.timer delete {"action":"ToLedMode","taskid":-1111})"}},
        {[] { return _ubus_call_async("vrop.mesh", "connect", nullptr); }, {"vrop.mesh connect {}"}},
    };
    PropertyRig rig(WITH_TASKS);
    rig.router.set_state("/vrop.mesh/enable", "1");
    for (const auto &[call, writes] : kept) {
        rig.forget();
        EXPECT_EQ(call(), 0);
        get("ledStatus"); // serves what was only sent
        EXPECT_EQ(rig.writes(), writes);
    }
    EXPECT_TRUE(get_taskId() == -1 && update_taskId() == -1) << "deleted";
}

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
