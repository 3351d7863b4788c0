// SPDX-License-Identifier: Apache-2.0
// The storage features: what stands in which file, and that a change is made whole or not at all.
#include <fstream>

#include <gmock/gmock.h>

#include "core/storage_file.h"
#include "properties/property_rig.h"
#include "support/main_log.h"
#include "support/moving_clock.h"
#include "support/text_file.h"

namespace {

using testing::HasSubstr;

constexpr char SETTINGS[] = "# of the user\nsamba=0\nunknown=7\nhcdn_open=0\n\ninmemoryop=1";
const std::string RESTART =
    R"({"action": "networkRestartTime", "mac": "A1:B2:C3:D4:E5:F6", "interfaceName": "wan0", "networkDelay": 30})";

void write_settings() {
    std::ofstream(STORAGE_FILE) << SETTINGS;
}

TEST(Hcdn, DocumentComesFromBothFilesAndTheDaemon) {
    PropertyRig rig;
    const std::string disk = R"("path":"/mnt/usb0",)";
    write_settings();
    std::ofstream("/aptmp/ecm.status") << "upnp=1\nnat_type=3\nconnect_status=1\n";
    EXPECT_THAT(get("hcdn"), HasSubstr(R"("inMemory":true,)"));
    EXPECT_THAT(get("hcdn"), HasSubstr(disk + R"("natType":3,"upnp":true,"registered":true)"));
}

TEST(Hcdn, SetChangesItsLinesAndTellsTheDaemon) {
    const std::string told = "vrop.ecm set ";
    const struct {
        const char *request, *settings; // null: the file stays as it is
        Texts happens;
    } cases[] = {
        {R"({"samba":true,"open":1})",
         "# of the user\nsamba=1\nunknown=7\nhcdn_open=1\n\ninmemoryop=1",
         {told + R"({"hcdn_open":1,"samba":1})", RESTART}},
        {R"({"inMemory":0,"outMemory":true})",
         "# of the user\nsamba=0\nunknown=7\nhcdn_open=0\n\ninmemoryop=0\noutmemoryop=1",
         {told + R"({"inmemoryop":0,"outmemoryop":1})", RESTART}},
        {R"({"samba":0,"open":false,"inMemory":1,"path":"/mnt/usb0"})", nullptr, {}},
        {R"({"path":"/mnt/a b"})", nullptr, {told + R"({"hcdnpath":"/mnt/a b"})", RESTART}},
    };
    PropertyRig rig;
    for (const auto &c : cases) {
        write_settings();
        rig.router.set_state("/vrop.ecm/hcdnpath", "\"/mnt/usb0\"");
        rig.forget();
        EXPECT_EQ(set("hcdn", std::string(R"({"hcdn":)") + c.request + "}"), 0) << c.request;
        Texts happened;
        for (const std::string &line : rig.take())
            if (line != "vrop.ecm get {}") happened.push_back(line);
        EXPECT_THAT(happened, testing::UnorderedElementsAreArray(c.happens)) << c.request;
        EXPECT_EQ(text_of(STORAGE_FILE), c.settings ? c.settings : SETTINGS) << c.request;
    }
}

TEST(Hcdn, BadMembersAndRefusalsChangeNothing) {
    PropertyRig rig;
    write_settings();
    for (const char *bad :
         {R"({"samba":2})", R"({"enable":false,"usb":false})", R"({"open":1,"samba":"1"})", R"({"open":[1]})",
          R"({"open":-1})", R"({"open":1,"path":"mnt"})", R"({"path":"/mnt/../etc"})", R"({"path":""})",
          R"({"path":"/a\nb"})", R"({"path":"/a\u0000b"})"}) {
        EXPECT_EQ(set("hcdn", std::string(R"({"hcdn":)") + bad + "}"), -1) << bad;
        EXPECT_EQ(rig.writes(), Texts()) << bad;
    }
    EXPECT_TRUE(has_logged("APP send data is error"));
    rig.router.add_fault(
        {.kind = router::Fault::Kind::Result, .object = "vrop.ecm", .method = "set", .value = 2});
    EXPECT_EQ(set("hcdn", R"({"hcdn":{"samba":1}})"), -1);
    EXPECT_EQ(text_of(STORAGE_FILE), SETTINGS);
    moving_clock::on_pause([](moving_clock::Millis) { std::ofstream(STORAGE_FILE) << "samba=1\nisusb=0"; });
    EXPECT_EQ(set("hcdn", R"({"hcdn":{"samba":1}})"), -1);
    EXPECT_EQ(text_of(STORAGE_FILE), "samba=0\nisusb=0"); // with what came meanwhile
    moving_clock::on_pause({});
    const std::string huge = std::string(70000, '#') + "\nsamba=0\n";
    std::ofstream(STORAGE_FILE) << huge;
    EXPECT_EQ(set("hcdn", R"({"hcdn":{"samba":1}})"), -1);
    EXPECT_EQ(text_of(STORAGE_FILE), huge);
}

} // namespace
