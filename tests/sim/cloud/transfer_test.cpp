// SPDX-License-Identifier: Apache-2.0
// Firmware offers, downloads and uploads of the simulated cloud.
#include "client.h"
#include <fstream>
#include <gmock/gmock.h>
#include <json-c/json.h>
#include <sys/stat.h>

namespace {

using cloudsim::Cloud;
using cloudsim::Firmware;

std::string member(const std::string &answer, const char *name) {
    json_object *root = json_tokener_parse(answer.c_str()), *data = nullptr, *value = nullptr;
    json_object_object_get_ex(root, "data", &data);
    std::string text =
        json_object_object_get_ex(data, name, &value) ? json_object_get_string(value) : "absent";
    json_object_put(root);
    return text;
}

std::string content(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    return file.is_open() ? bytes : "absent";
}

TEST(CloudFirmware, OfferSaysWhatItIsToldToSay) {
    const std::string md5 = "900150983cd24fb0d6963f7d28e17f72"; // of "abc", RFC 1321
    auto with = [](auto change) {
        Firmware firmware{
            .name = "f.img", .image = "abc", .version = "2.0", .strategy = "s", .description = "d"};
        change(firmware);
        return firmware;
    };
    const struct {
        Firmware firmware;
        cloudsim::Fault fault;
        std::string size, md5;
    } rows[] = {
        {with([](Firmware &) {}), {}, "3", md5},
        {with([](Firmware &f) { f.upper_md5 = true; }), {}, "3", "900150983CD24FB0D6963F7D28E17F72"},
        {with([](Firmware &f) { f.wrong_md5 = true; }), {}, "3", "000150983cd24fb0d6963f7d28e17f72"},
        {with([](Firmware &f) { f.wrong_size = true; }), {}, "4", md5},
        {with([](Firmware &f) { f.md5 = ""; }), {}, "3", ""},
        {with([](Firmware &) {}),
         {.wrong_md5 = true, .wrong_size = true},
         "4",
         "000150983cd24fb0d6963f7d28e17f72"},
    };
    Cloud cloud({.devices = {{SERIAL, PRODUCT, SECRET}}});
    cloud.start();
    for (const auto &row : rows) {
        cloud.offer(row.firmware);
        cloud.fault(row.fault);
        std::string answer =
            perform(signed_call(cloud, cloudsim::check_upgrade_path, check_members("1.0"))).body;
        EXPECT_EQ(member(answer, "size"), row.size) << answer;
        EXPECT_EQ(member(answer, "md5"), row.md5) << answer;
        EXPECT_EQ(member(answer, "url"), cloud.url("/firmware/f.img"));
        EXPECT_EQ(perform({.url = member(answer, "url")}).body, "abc");
    }
    std::string whole = perform(signed_call(cloud, cloudsim::check_upgrade_path, check_members("1.0"))).body;
    EXPECT_EQ(whole, R"({"code":0,"data":{"id":1,"size":3,"version":"2.0","md5":")" + md5 +
                         R"(","description":"d","strategy":"s","firmwareName":"f.img","url":")" +
                         cloud.url("/firmware/f.img") + R"("}})");
}

TEST(CloudFirmware, NothingIsOfferedWithoutNeed) {
    Cloud cloud({.devices = {{SERIAL, PRODUCT, SECRET}}});
    cloud.start();
    auto check = [&](const char *version) {
        return perform(signed_call(cloud, cloudsim::check_upgrade_path, check_members(version))).body;
    };
    EXPECT_EQ(check("1.0"), R"({"code":0})");
    cloud.offer({.name = "f", .image = "", .version = "2.0", .url = ""});
    EXPECT_EQ(check("2.0"), R"({"code":0})");
    EXPECT_EQ(member(check("1.0"), "url"), "");
    cloud.withdraw();
    EXPECT_EQ(check("1.0"), R"({"code":0})");
    EXPECT_EQ(perform({.url = cloud.url("/firmware/f")}).status, 404);
    EXPECT_THROW(cloud.offer({.name = "../f", .image = "", .version = "1"}), std::invalid_argument);
}

TEST(CloudTransfers, UploadsAreBoundedAndStored) {
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
        {"empty", "", {}, 200, true},
        {"largest", big, {}, 200, true},
        {"larger", big + "b", {}, 413, false},
        {".hidden", "x", {}, 400, false},
        {"a%2Fb", "x", {}, 404, false},
        {"refused", "x", {.status = 503}, 503, false},
        {"nested/name", "x", {}, 404, false},
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
        EXPECT_EQ(content(std::string("/tmp/") + row.name), row.stored ? row.body : "absent");
    }
    struct stat small;
    ASSERT_EQ(stat("/tmp/small", &small), 0);
    EXPECT_EQ(small.st_mode & 0777, 0600u);
    EXPECT_EQ(cloud.requests().size(), std::size(rows)) << "refused ones are recorded too";
}

TEST(CloudTransfers, StoreThatCannotWrite) {
    Cloud cloud({.store = "/nowhere"});
    cloud.start();
    EXPECT_EQ(perform({.url = cloud.url("/upload/f"), .method = "PUT", .body = "x"}).status, 500);
    EXPECT_EQ(cloud.uploaded("f"), std::nullopt);
}

TEST(CloudTransfers, CertificateIsTheOneHandedOut) {
    Cloud cloud({.certificate_out = "/tmp/cert.pem"});
    cloud.start();
    std::string pem = content("/tmp/cert.pem");
    EXPECT_EQ(pem, cloud.certificate());
    std::string url = cloud.url(cloud.add_backup("b.config", "{}"));
    EXPECT_EQ(perform({.url = url, .trusted = pem}).body, "{}");
    Cloud other;
    other.start();
    EXPECT_EQ(perform({.url = url, .trusted = other.certificate()}).result, CURLE_PEER_FAILED_VERIFICATION);
}

TEST(CloudTransfers, TakenPortIsAnError) {
    Cloud first, second;
    int port = first.start();
    EXPECT_THROW(second.start(port), std::runtime_error);
}

} // namespace
