// SPDX-License-Identifier: Apache-2.0
// Firmware offers, downloads and uploads of the simulated cloud.
#include "client.h"
#include "support/text_file.h"
#include <filesystem>
#include <gmock/gmock.h>

namespace {

using cloudsim::Cloud;
using cloudsim::Firmware;
using testing::AllOf;
using testing::HasSubstr;

TEST(CloudFirmware, IsOfferedWhereItIsNeededAsItIsToldTo) {
    Cloud cloud({.devices = {{SERIAL, PRODUCT, SECRET}}});
    cloud.start();
    auto check = [&](const char *version) {
        return perform(signed_call(cloud, cloudsim::check_upgrade_path, check_members(version))).body;
    };
    EXPECT_EQ(check("1.0"), R"({"code":0})");
    Firmware firmware{.name = "f.img", .image = "abc", .version = "2.0", .strategy = "s", .description = "d"};
    cloud.offer(firmware);
    const std::string md5 = "900150983cd24fb0d6963f7d28e17f72"; // of "abc", RFC 1321
    EXPECT_EQ(check("1.0"), R"({"code":0,"data":{"id":1,"size":3,"version":"2.0","md5":")" + md5 +
                                R"(","description":"d","strategy":"s","firmwareName":"f.img","url":")" +
                                cloud.url("/firmware/f.img") + R"("}})");
    EXPECT_EQ(check("2.0"), R"({"code":0})");
    EXPECT_EQ(perform({.url = cloud.url("/firmware/f.img")}).body, "abc");
    cloud.fault({.wrong_md5 = true, .wrong_size = true});
    EXPECT_THAT(check("1.0"), AllOf(HasSubstr(R"("size":4,)"), HasSubstr("\"00" + md5.substr(2))));
    firmware.upper_md5 = true;
    cloud.offer(firmware);
    EXPECT_THAT(check("1.0"), HasSubstr("\"900150983CD24FB0D6963F7D28E17F72\""));
    cloud.withdraw();
    EXPECT_EQ(check("1.0"), R"({"code":0})");
    EXPECT_EQ(perform({.url = cloud.url("/firmware/f.img")}).status, 404);
    EXPECT_THROW(cloud.offer({.name = "../f", .image = "", .version = "1"}), std::invalid_argument);
}

TEST(CloudTransfers, UploadsAreBoundedAndStoredPrivately) {
    Cloud cloud({.store = "/tmp", .max_upload = 100'000});
    cloud.start();
    const std::string big(100'000, 'b');
    const struct {
        const char *name;
        std::string body;
        cloudsim::Fault fault;
        long status;
        bool stored;
    } rows[] = {
        {"small", std::string("a\0b", 3), {}, 200, true},
        {"largest", big, {}, 200, true},
        {"larger", big + "b", {}, 413, false},
        {".hidden", "x", {}, 400, false},
        {"a%2Fb", "x", {}, 404, false},
        {"refused", "x", {.status = 503}, 503, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        if (row.fault.status) cloud.fault(row.fault);
        Reply reply = perform({.url = cloud.url(std::string("/upload/") + row.name),
                               .method = "PUT",
                               .body = row.body,
                               .headers = {"Content-Type: application/octet-stream"}});
        EXPECT_EQ(reply.status, row.status);
        EXPECT_EQ(cloud.uploaded(row.name), row.stored ? std::optional(row.body) : std::nullopt);
        EXPECT_EQ(text_of(std::string("/tmp/") + row.name), row.stored ? row.body : "");
    }
    cloud.start_control("/tmp/control.sock");
    for (const char *file : {"/tmp/small", "/tmp/control.sock"})
        EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms{0600}) << file;
    EXPECT_EQ(cloud.requests().size(), std::size(rows)) << "refused ones are recorded too";
}

} // namespace
