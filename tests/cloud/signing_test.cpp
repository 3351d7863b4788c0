// SPDX-License-Identifier: Apache-2.0
#include "cloud/signing.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

namespace {

// What the server works out from the same facts.
std::string expected_sign(const std::string &key, const std::string &message) {
    uint8_t digest[20];
    HMAC(EVP_sha1(), key.data(), static_cast<int>(key.size()),
         reinterpret_cast<const uint8_t *>(message.data()), message.size(), digest, nullptr);
    std::string text;
    for (uint8_t byte : digest)
        for (int nibble : {byte >> 4, byte & 0xf})
            text += "0123456789abcdef"[nibble];
    return text;
}

TEST(Sign, JoinsIdentifierProductAndTime) {
    char sign[41];
    ASSERT_EQ(get_sign("Tq83mZc1wk", "SN0001", "secret", sign, sizeof sign, 1714550587), 0);
    EXPECT_EQ(sign, expected_sign("secret", "SN0001_Tq83mZc1wk_1714550587"));
}

TEST(Sign, CutsWhatIsTooLong) {
    const std::string full = expected_sign("secret", "SN_P_5");
    for (int size : {1, 2, 21, 40, 41, 60}) {
        std::vector<char> sign(static_cast<size_t>(size), 'x');
        ASSERT_EQ(get_sign("P", "SN", "secret", sign.data(), size, 5), 0);
        EXPECT_EQ(std::string(sign.data()), full.substr(0, static_cast<size_t>(size) - 1));
    }
    const std::string name(200, 'n');
    char sign[41];
    ASSERT_EQ(get_sign("P", name.c_str(), "secret", sign, sizeof sign, 5), 0);
    EXPECT_EQ(sign, expected_sign("secret", name.substr(0, 127)));
}

TEST(Sign, KeyOfAtMostABlock) {
    char sign[41];
    const std::string key(64, 'k'), longer(65, 'k');
    ASSERT_EQ(get_sign("P", "SN", key.c_str(), sign, sizeof sign, 5), 0);
    EXPECT_EQ(sign, expected_sign(key, "SN_P_5"));
    ASSERT_EQ(get_sign("P", "SN", longer.c_str(), sign, sizeof sign, 5), 0);
    EXPECT_STREQ(sign, "");
}

TEST(Sign, RefusesMissingArguments) {
    char sign[41] = "as before";
    EXPECT_EQ(get_sign(nullptr, "SN", "secret", sign, sizeof sign, 5), -1);
    EXPECT_EQ(get_sign("P", nullptr, "secret", sign, sizeof sign, 5), -1);
    EXPECT_EQ(get_sign("P", "SN", nullptr, sign, sizeof sign, 5), -1);
    EXPECT_EQ(get_sign("P", "SN", "secret", nullptr, sizeof sign, 5), -1);
    EXPECT_EQ(get_sign("P", "SN", "secret", sign, 0, 5), -1);
    EXPECT_EQ(get_sign("P", "SN", "secret", sign, -1, 5), -1);
    EXPECT_STREQ(sign, "as before");
}

} // namespace
