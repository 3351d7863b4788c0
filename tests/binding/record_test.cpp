// SPDX-License-Identifier: Apache-2.0
// The record that the SDK is given, whose layout the contract checks, and what else the SDK may call.
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

// A daemon's answer about the device, and what the record then says of it.
TEST(Record, TakesTheIdentityWithItsFallbacks) {
    const std::pair<const char *, const char *> rows[] = {
        {R"("mac":"a1b2c3d4e5f6","sn":"S","iswversion":"V1","ihdversion":"H1","hdversion":"H0","odmvendor":"M",)"
         R"("province":"1234567890")",
         "S A1:B2:C3:D4:E5:F6 V1 H1 M 1234567"},
        {R"("mac":"a1b2c3d4e5f6","sn":"")", "a1b2c3d4e5f6 A1:B2:C3:D4:E5:F6   RVXA "},
        {R"("sn":"S","ihdversion":"","hdversion":"H0","odmvendor":"")", "S   H0 RVXA "},
        {R"("mac":7,"sn":8,"hdversion":9,"odmvendor":null)", "8 07:00:00:00:00:00  9 RVXA "},
        {"", "    RVXA "},
        {nullptr, "     "},
    };
    RouterRig rig;
    for (const auto &[answer, identity] : rows) {
        rig.router.clear_faults();
        rig.router.add_fault({.kind = answer ? Fault::Kind::Reply : Fault::Kind::Absent,
                              .object = "vrop.ftinfo",
                              .reply = std::string("{\"vrop.ftinfo\":{") + (answer ? answer : "") + "}}"});
        memset(static_cast<void *>(&global_config), '#', sizeof global_config);
        const struct global_config &is = *init_config();
        const std::string bytes(reinterpret_cast<const char *>(&is), sizeof is);
        EXPECT_EQ(bytes.find('#'), std::string::npos) << "left over";
        EXPECT_EQ(std::string(is.serial_number) + " " + is.mac + " " + is.software_version + " " +
                      is.hardware_version + " " + is.vendor + " " + is.area_code,
                  identity);
    }
}

TEST(Record, SaysWhatItTook) {
    RouterRig rig;
    rig.router.set_state(
        "/vrop.ftinfo",
        R"({"mac":"a1b2c3d4e5f6","sn":"N","iswversion":"V","ihdversion":"H","province":"1"})");
    const std::string key(63, 'k'), path(127, 'l');
    copy_text(register_config.product_key, key.c_str());
    copy_text(register_config.register_url, "U");
    copy_text(register_config.product_id, "I");
    copy_text(register_config.product_secret, "S");
    copy_text(register_config.cache_path, "C");
    copy_text(register_config.sdk_log_path, path.c_str());
    const struct global_config &is = *init_config();
    EXPECT_THAT(log_messages(),
                ElementsAre("start", "", "-------------->start init config<------------------",
                            "mac:A1:B2:C3:D4:E5:F6", "sn:N", "iswversion:V", "hdversion:H", "area_code:1",
                            "register_url:U", "register_id:I", "product_secret:S", "cache_file_path:C",
                            "product_key:" + key, "log_file_path:" + path, "end", ""));
    EXPECT_TRUE(is.upgrade == dev_upgrade2 && is.other_handle->device_online == device_online);
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
