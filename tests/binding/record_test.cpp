// SPDX-License-Identifier: Apache-2.0
// The record as the SDK finds it in memory, byte by byte, and what else the SDK may call.
#include "binding/sdk_record.h"

#include <cstring>
#include <gmock/gmock.h>
#include <string>

#include "binding/tables.h"
#include "core/global_config.h"
#include "core/registration.h"
#include "core/text.h"
#include "support/router_rig.h"

namespace {

using router::Fault;
using testing::ElementsAre;

template <class Value>
std::string bytes_of(const Value &value) {
    return {reinterpret_cast<const char *>(&value), sizeof value};
}

// A text in its field, the rest zeros.
std::string field(std::string text, size_t width) {
    text.resize(width, '\0');
    return text;
}

// The record made from what the router says of itself.
std::string record_of(RouterRig &rig, const Fault &info) {
    rig.router.clear_faults();
    rig.router.add_fault(info);
    copy_text(register_config.product_key, std::string(63, 'k').c_str());
    copy_text(register_config.register_url, "https://host/register");
    copy_text(register_config.product_id, "router");
    copy_text(register_config.product_secret, "secret");
    copy_text(register_config.cache_path, "/tmp/cache");
    copy_text(register_config.sdk_log_path, std::string(127, 'l').c_str());
    memset(static_cast<void *>(&global_config), '#', sizeof global_config);
    EXPECT_EQ(init_config(), &global_config);
    return bytes_of(global_config);
}

Fault info(const std::string &members) {
    return {
        .kind = Fault::Kind::Reply, .object = "vrop.ftinfo", .reply = "{\"vrop.ftinfo\":{" + members + "}}"};
}

// The record with that identity in it.
std::string record_with(const std::string &serial, const std::string &mac, const std::string &software,
                        const std::string &hardware, const std::string &vendor, const std::string &area) {
    return field(std::string(63, 'k'), 64) + field(serial, 128) + field(mac, 64) + field(software, 64) +
           field(hardware, 64) + field(vendor, 128) + field("https://host/register", 256) +
           field("router", 64) + field("secret", 128) + field("/tmp/cache", 128) +
           field(std::string(127, 'l'), 128) + bytes_of(&property_map) + bytes_of(&service_map) +
           bytes_of(&g_other_handle) + bytes_of(nullptr) + bytes_of(&dev_upgrade2) + bytes_of(uint64_t{0}) +
           bytes_of(int32_t{300}) + std::string(12, '\0') + field(area, 8) + bytes_of(uint64_t{0});
}

TEST(Record, HasEveryByteInItsPlace) {
    RouterRig rig;
    EXPECT_EQ(record_of(rig, info(R"("mac":"a1b2c3d4e5f6","sn":"SERIAL","iswversion":"V1","ihdversion":"H1",
                     "hdversion":"H0","odmvendor":"MAKER","province":"1234567890")")),
              record_with("SERIAL", "A1:B2:C3:D4:E5:F6", "V1", "H1", "MAKER", "1234567"));
    EXPECT_EQ(bytes_of(g_other_handle), field(bytes_of(&device_online), 56));
    EXPECT_THAT(log_messages(),
                ElementsAre("start", "", "-------------->start init config<------------------",
                            "mac:A1:B2:C3:D4:E5:F6", "sn:SERIAL", "iswversion:V1", "hdversion:H1",
                            "area_code:1234567", "register_url:https://host/register", "register_id:router",
                            "product_secret:secret", "cache_file_path:/tmp/cache",
                            "product_key:" + std::string(63, 'k'), "log_file_path:" + std::string(127, 'l'),
                            "end", ""));
}

TEST(Record, IdentityHasItsFallbacks) {
    RouterRig rig;
    EXPECT_EQ(record_of(rig, info(R"("mac":"a1b2c3d4e5f6","sn":"")")),
              record_with("a1b2c3d4e5f6", "A1:B2:C3:D4:E5:F6", "", "", "RVXA", ""));
    EXPECT_EQ(record_of(rig, info(R"("sn":"S","ihdversion":"","hdversion":"H0","odmvendor":"")")),
              record_with("S", "", "", "H0", "RVXA", ""));
    EXPECT_EQ(record_of(rig, info(R"("mac":7,"sn":8,"hdversion":9,"odmvendor":null)")),
              record_with("8", "07:00:00:00:00:00", "", "9", "RVXA", ""));
    EXPECT_EQ(record_of(rig, info("")), record_with("", "", "", "", "RVXA", ""));
    EXPECT_EQ(record_of(rig, {.kind = Fault::Kind::Absent, .object = "vrop.ftinfo"}),
              record_with("", "", "", "", "", ""));
}

TEST(Tables, ReserveASlotAndEndWithAnEmptyRow) {
    for (const service_row &row : service_map)
        EXPECT_EQ(row.reserved, nullptr);
    EXPECT_EQ(bytes_of(property_map[16]), std::string(56, '\0'));
    EXPECT_EQ(bytes_of(service_map[29]), std::string(24, '\0'));
}

TEST(Callbacks, UpgradeOffers) {
    RouterRig rig;
    EXPECT_EQ(dev_upgrade(), -1);
    for (int has_new : {0, 1, 2, -1}) {
        clear_main_log();
        EXPECT_EQ(user_chk_reply("K", "D", nullptr, "M", "V", has_new, nullptr), 0);
        EXPECT_TRUE(has_logged("----------->user_chk_reply. product_key:K, device_name:D, upgrade_url:, "
                               "md5:M, curversion:V, hasnew:" +
                               std::to_string(has_new) + " strategy:"));
        EXPECT_EQ(has_logged("download firmware fail"), has_new != 0); // there is no address
    }
    EXPECT_THAT(rig.router.calls(), testing::IsEmpty());
}

} // namespace
