// SPDX-License-Identifier: Apache-2.0
// Digests, base64 and the signature made of them.
#include "digests/digest.h"
#include "https/signing.h"

#include <random>
#include <string>

#include <gtest/gtest.h>
#define MD5_CTX OPENSSL_MD5_CTX // the agent has a type of that name
#include <openssl/evp.h>
#include <openssl/hmac.h>
#undef MD5_CTX

namespace {

std::mt19937 source(20240501);

std::string random_bytes(size_t length) {
    std::string bytes(length, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(source());
    return bytes;
}

const uint8_t *data_of(const std::string &bytes) {
    return reinterpret_cast<const uint8_t *>(bytes.data());
}

template <size_t N>
std::string hex(const uint8_t (&digest)[N]) {
    std::string text;
    for (uint8_t byte : digest)
        text += {hb2hex(byte >> 4), hb2hex(byte)};
    return text;
}

template <size_t N>
std::string openssl(const EVP_MD *kind, const std::string &bytes) {
    uint8_t digest[N];
    EVP_Digest(bytes.data(), bytes.size(), digest, nullptr, kind, nullptr);
    return hex(digest);
}

// Feeds the bytes in pieces of random sizes, as a transfer would.
template <typename Update>
void feed(const std::string &bytes, Update update) {
    for (size_t at = 0, piece = 0; at < bytes.size(); at += piece) {
        piece = std::min<size_t>(source() % 200, bytes.size() - at);
        update(data_of(bytes) + at, piece);
    }
}

std::string sha1(const std::string &bytes) {
    sha1_context context, copy;
    utils_sha1_init(&context);
    utils_sha1_starts(&context);
    feed(bytes, [&](const uint8_t *piece, size_t length) { utils_sha1_update(&context, piece, length); });
    utils_sha1_clone(&copy, &context);
    uint8_t digest[20], again[20], whole[20];
    utils_sha1_finish(&context, digest);
    utils_sha1_finish(&copy, again);
    utils_sha1(data_of(bytes), bytes.size(), whole);
    EXPECT_TRUE(hex(digest) == hex(again) && hex(digest) == hex(whole));
    return hex(digest);
}

std::string md5(const std::string &bytes) {
    MD5_CTX context;
    MD5Init(&context);
    feed(bytes, [&](const uint8_t *piece, size_t length) { MD5Update(&context, piece, length); });
    uint8_t digest[16];
    MD5Final(digest, &context);
    return hex(digest);
}

std::string openssl_hmac(const std::string &key, const std::string &message) {
    uint8_t digest[20];
    HMAC(EVP_sha1(), key.data(), static_cast<int>(key.size()), data_of(message), message.size(), digest,
         nullptr);
    return hex(digest);
}

TEST(Digest, AgreesWithOpensslForAnyLengthAndPieces) {
    for (size_t length = 0; length < 700; length++) {
        const std::string bytes = random_bytes(length < 300 ? length : source() % 20000);
        ASSERT_EQ(sha1(bytes), openssl<20>(EVP_sha1(), bytes)) << bytes.size();
        ASSERT_EQ(md5(bytes), openssl<16>(EVP_md5(), bytes)) << bytes.size();
    }
}

std::string encoded(const std::string &plain) {
    std::vector<char> text((plain.size() + 2) / 3 * 4); // exact room
    size_t length = 0;
    EXPECT_EQ(base64_encode(data_of(plain), plain.size(), text.data(), &length), 0);
    EXPECT_EQ(length, text.size());
    return {text.begin(), text.end()};
}

// "refused" for what is not base64.
std::string decoded(const std::string &text) {
    std::vector<uint8_t> plain(text.size() / 4 * 3); // exact room
    size_t length = 0;
    if (base64_decode(text.data(), text.size(), plain.data(), &length) != 0) return "refused";
    return {plain.begin(), plain.begin() + static_cast<long>(length)};
}

TEST(Base64, GoesThereAndBackAndRefusesAllElse) { // RFC 4648
    for (const auto &[plain, text] :
         {std::pair{"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}})
        EXPECT_EQ(encoded(plain), text);
    for (size_t length = 1; length < 200; length++) {
        const std::string bytes = random_bytes(length);
        ASSERT_EQ(decoded(encoded(bytes)), bytes);
    }
    for (std::string text :
         {"", "Zg=", "Zg", "Z===", "====", "Zg==Zg==", "Zm9v!m9v", "Zh==", "Zm9=", "Zm\nv"})
        EXPECT_EQ(decoded(text), "refused") << text;
    EXPECT_EQ(decoded(std::string("Zm\0v", 4)), "refused");
    char text[4];
    size_t length = 0;
    EXPECT_EQ(base64_encode(nullptr, 1, text, &length), -1);
    EXPECT_EQ(base64_encode(data_of("f"), 0, text, &length), -1);
    EXPECT_EQ(base64_encode(data_of("f"), 1, nullptr, &length), -1);
    EXPECT_EQ(base64_decode(nullptr, 4, reinterpret_cast<uint8_t *>(text), &length), -1);
}

TEST(Sign, JoinsIdentifierProductAndTime) {
    const std::string name(200, 'n'), key(64, 'k'), longer(65, 'k'), full = openssl_hmac("secret", "SN_P_5");
    const struct {
        const char *product, *identifier, *key;
        int size, result;
        std::string sign;
    } rows[] = {
        {"P", "SN", "secret", 60, 0, full},
        {"P", "SN", "secret", 41, 0, full},
        {"P", "SN", "secret", 40, 0, full.substr(0, 39)},
        {"P", "SN", "secret", 1, 0, ""},
        {"P", name.c_str(), "secret", 41, 0, openssl_hmac("secret", name.substr(0, 127))},
        {"P", "SN", key.c_str(), 41, 0, openssl_hmac(key, "SN_P_5")},
        {"P", "SN", longer.c_str(), 41, 0, ""},
        {nullptr, "SN", "secret", 41, -1, "before"},
        {"P", nullptr, "secret", 41, -1, "before"},
        {"P", "SN", nullptr, 41, -1, "before"},
        {"P", "SN", "secret", 0, -1, "before"},
    };
    for (const auto &row : rows) {
        char sign[64] = "before";
        EXPECT_EQ(get_sign(row.product, row.identifier, row.key, sign, row.size, 5), row.result);
        EXPECT_EQ(sign, row.sign);
    }
    EXPECT_EQ(get_sign("P", "SN", "secret", nullptr, 41, 5), -1);
}

} // namespace
