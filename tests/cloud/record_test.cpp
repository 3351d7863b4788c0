// SPDX-License-Identifier: Apache-2.0
// The record and the tables as the SDK finds them in memory, byte by byte.
#include "cloud/sdk_record.h"

#include <cstring>
#include <gmock/gmock.h>
#include <string>

#include "cloud/global_config.h"
#include "cloud/tables.h"
#include "core/registration.h"
#include "core/text.h"
#include "support/router_rig.h"

namespace {

using router::Fault;
using testing::ElementsAre;

std::string record_bytes() {
    return {reinterpret_cast<const char *>(&global_config), sizeof global_config};
}

template <class Value>
std::string bytes_of(Value value) {
    std::string bytes(sizeof value, '\0');
    memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

// A text in its field, the rest zeros.
std::string field(std::string text, size_t width) {
    text.resize(width, '\0');
    return text;
}

void set_info(RouterRig &rig, const std::string &members) {
    rig.router.clear_faults();
    rig.router.add_fault({.kind = Fault::Kind::Reply,
                          .object = "vrop.ftinfo",
                          .reply = "{\"vrop.ftinfo\":{" + members + "}}"});
}

void fill_register_config() {
    copy_text(register_config.product_key, std::string(63, 'k').c_str());
    copy_text(register_config.register_url, "https://host/register");
    copy_text(register_config.product_id, "router");
    copy_text(register_config.product_secret, "secret");
    copy_text(register_config.cache_path, "/tmp/cache");
    copy_text(register_config.sdk_log_path, std::string(127, 'l').c_str());
}

// The bytes from the product key up to the tables, with the identity part given.
std::string expected_texts(const std::string &identity) {
    return field(std::string(63, 'k'), 64) + identity + field("https://host/register", 256) +
           field("router", 64) + field("secret", 128) + field("/tmp/cache", 128) +
           field(std::string(127, 'l'), 128);
}

std::string expected_tables() {
    return bytes_of(&property_map) + bytes_of(&service_map) + bytes_of(&g_other_handle) + bytes_of(nullptr) +
           bytes_of(&dev_upgrade2) + bytes_of(uint64_t{0}) + bytes_of(int32_t{300}) + std::string(12, '\0');
}

TEST(Record, HasEveryByteInItsPlace) {
    RouterRig rig;
    fill_register_config();
    set_info(rig, R"("mac":"a1b2c3d4e5f6","sn":"SERIAL","iswversion":"V1","ihdversion":"H1","hdversion":"H0",
                     "odmvendor":"MAKER","province":"1234567890")");
    memset(static_cast<void *>(&global_config), '#', sizeof global_config);
    EXPECT_EQ(init_config(), &global_config);
    std::string identity = field("SERIAL", 128) + field("A1:B2:C3:D4:E5:F6", 64) + field("V1", 64) +
                           field("H1", 64) + field("MAKER", 128);
    EXPECT_EQ(record_bytes(),
              expected_texts(identity) + expected_tables() + field("1234567", 8) + bytes_of(uint64_t{0}));
    EXPECT_EQ(sizeof g_other_handle, 56u);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(&g_other_handle), 56),
              field(bytes_of(&device_online), 56));
    EXPECT_THAT(log_messages(),
                ElementsAre("start", "", "-------------->start init config<------------------",
                            "mac:A1:B2:C3:D4:E5:F6", "sn:SERIAL", "iswversion:V1", "hdversion:H1",
                            "area_code:1234567", "register_url:https://host/register", "register_id:router",
                            "product_secret:secret", "cache_file_path:/tmp/cache",
                            "product_key:" + std::string(63, 'k'), "log_file_path:" + std::string(127, 'l'),
                            "end", ""));
}

TEST(Record, IdentityHasItsFallbacks) {
    struct Row {
        const char *info, *serial, *mac, *hardware, *vendor;
    };
    const Row rows[] = {
        {R"("mac":"a1b2c3d4e5f6","sn":"")", "a1b2c3d4e5f6", "A1:B2:C3:D4:E5:F6", "", "RVXA"},
        {R"("sn":"S","ihdversion":"","hdversion":"H0","odmvendor":"")", "S", "", "H0", "RVXA"},
        {R"("mac":7,"sn":8,"hdversion":9,"odmvendor":null)", "8", "07:00:00:00:00:00", "9", "RVXA"},
        {"", "", "", "", "RVXA"},
    };
    RouterRig rig;
    for (const Row &row : rows) {
        SCOPED_TRACE(row.info);
        set_info(rig, row.info);
        init_config();
        EXPECT_STREQ(global_config.serial_number, row.serial);
        EXPECT_STREQ(global_config.mac, row.mac);
        EXPECT_STREQ(global_config.hardware_version, row.hardware);
        EXPECT_STREQ(global_config.vendor, row.vendor);
    }
}

TEST(Record, WithoutTheDeviceInformationOnlyThatStaysEmpty) {
    RouterRig rig;
    fill_register_config();
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "vrop.ftinfo"});
    init_config();
    EXPECT_EQ(record_bytes(),
              expected_texts(std::string(448, '\0')) + expected_tables() + std::string(16, '\0'));
}

TEST(Tables, HaveTheirRowsInOrderAndAnEnd) {
    const std::string properties =
        "deviceInfo ledStatus wifiInfo timeReboot networkInfo visitorsWifi deviceStatus "
        "apDevices mesh meshTopology timeLed hcdn ipv6Status networkProtocol "
        "wifi2gSeniorInfo wifi5gSeniorInfo ";
    const std::string services =
        "tuningWifi reboot recovery checkSignal checkInterference updatePwd monitorSpeed "
        "apMonitorSpeed allApMonitorSpeed tuningBackupCfg cfgReport relayScan "
        "maxMonitorSpeed cutUsb diskCheck nat connectCheck uploadLog outdiskFormat "
        "channelQuality portLinkSpeed rssiQualityCheck networkCheck physicsInfo pingTest "
        "remoteCap remoteCfgExport tuningMemory wirelessInterference ";
    ASSERT_EQ(sizeof property_map, 17u * 56);
    ASSERT_EQ(sizeof service_map, 30u * 24);
    const auto *slots = reinterpret_cast<const uint64_t *>(property_map); // seven to a row
    const auto *cells = reinterpret_cast<const uint64_t *>(service_map);  // three to a row
    std::string property_names, service_names;
    for (size_t row = 0; row < 16; row++) {
        property_names += std::string(property_map[row].name) + " ";
        EXPECT_EQ(slots[row * 7 + 5], 0u) << row;
        EXPECT_TRUE(row == 1 || row == 2 || row == 11 || property_map[row].report == nullptr) << row;
    }
    for (size_t row = 0; row < 29; row++) {
        service_names += std::string(service_map[row].name) + " ";
        EXPECT_EQ(cells[row * 3 + 1], 0u) << row;
    }
    EXPECT_EQ(property_names, properties);
    EXPECT_EQ(service_names, services);
    EXPECT_THAT(std::vector(slots + 16 * 7, slots + 17 * 7), testing::Each(0u));
    EXPECT_THAT(std::vector(cells + 29 * 3, cells + 30 * 3), testing::Each(0u));
}

TEST(Callbacks, UpgradeOffers) {
    RouterRig rig;
    EXPECT_EQ(dev_upgrade(), -1);
    EXPECT_EQ(user_chk_reply("K", "D", nullptr, "M", "V", 0, nullptr), 0);
    EXPECT_TRUE(has_logged("----------->user_chk_reply. product_key:K, device_name:D, upgrade_url:, md5:M, "
                           "curversion:V, hasnew:0 strategy:"));
    EXPECT_THAT(rig.router.calls(), testing::IsEmpty());
}

} // namespace
