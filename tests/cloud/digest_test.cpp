// SPDX-License-Identifier: Apache-2.0
// Digests, base64 and the signature made of them.
#include "cloud/digest.h"
#include "cloud/signing.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#define MD5_CTX OPENSSL_MD5_CTX // the agent has a type of that name
#include <openssl/evp.h>
#include <openssl/hmac.h>
#undef MD5_CTX

namespace {

using Bytes = std::vector<uint8_t>;

Bytes bytes_of(const std::string &text) {
    return {text.begin(), text.end()};
}

std::string hex(const uint8_t *bytes, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; i++)
        text += {hb2hex(bytes[i] >> 4), hb2hex(bytes[i])};
    return text;
}

std::string openssl_hmac(const std::string &key, const std::string &message) {
    uint8_t digest[20];
    HMAC(EVP_sha1(), key.data(), static_cast<int>(key.size()),
         reinterpret_cast<const uint8_t *>(message.data()), message.size(), digest, nullptr);
    return hex(digest, 20);
}

std::string openssl_digest(const EVP_MD *kind, const Bytes &data) {
    uint8_t digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    EVP_Digest(data.data(), data.size(), digest, &length, kind, nullptr);
    return hex(digest, length);
}

// Feeds `data` in pieces of random sizes, as a transfer would.
template <typename Update>
void feed(const Bytes &data, std::mt19937 &random, Update update) {
    for (size_t at = 0; at < data.size();) {
        size_t piece = std::min<size_t>(random() % 200, data.size() - at);
        update(data.data() + at, piece);
        at += piece;
    }
}

std::string sha1_in_pieces(const Bytes &data, std::mt19937 &random) {
    sha1_context context, copy;
    utils_sha1_init(&context);
    utils_sha1_starts(&context);
    feed(data, random,
         [&](const uint8_t *piece, size_t length) { utils_sha1_update(&context, piece, length); });
    utils_sha1_clone(&copy, &context);
    uint8_t digest[20], again[20];
    utils_sha1_finish(&context, digest);
    utils_sha1_finish(&copy, again);
    EXPECT_EQ(hex(digest, 20), hex(again, 20));
    return hex(digest, 20);
}

std::string md5_in_pieces(const Bytes &data, std::mt19937 &random) {
    MD5_CTX context;
    MD5Init(&context);
    feed(data, random, [&](const uint8_t *piece, size_t length) { MD5Update(&context, piece, length); });
    uint8_t digest[16];
    MD5Final(digest, &context);
    return hex(digest, 16);
}

TEST(Digest, KnownMessages) {
    struct Case {
        std::string message, sha1, md5;
    };
    const Case cases[] = {
        {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709", "d41d8cd98f00b204e9800998ecf8427e"},
        {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d", "900150983cd24fb0d6963f7d28e17f72"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "84983e441c3bd26ebaae4aa1f95129e5e54670f1", "8215ef0796a20bcaaae116d3876c664a"},
        {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f",
         "7707d6ae4e027c70eea2a935c2296f21"},
    };
    std::mt19937 random(1);
    for (const Case &c : cases) {
        EXPECT_EQ(sha1_in_pieces(bytes_of(c.message), random), c.sha1);
        EXPECT_EQ(md5_in_pieces(bytes_of(c.message), random), c.md5);
    }
}

TEST(Digest, AgreesWithOpensslForAnyLengthAndPieces) {
    std::mt19937 random(20240501);
    for (size_t length = 0; length < 700; length++) {
        Bytes data(length < 300 ? length : random() % 20000);
        for (uint8_t &byte : data)
            byte = static_cast<uint8_t>(random());
        ASSERT_EQ(sha1_in_pieces(data, random), openssl_digest(EVP_sha1(), data)) << data.size();
        ASSERT_EQ(md5_in_pieces(data, random), openssl_digest(EVP_md5(), data)) << data.size();
        uint8_t whole[20];
        utils_sha1(data.data(), data.size(), whole);
        ASSERT_EQ(hex(whole, 20), openssl_digest(EVP_sha1(), data));
    }
}

std::string hmac(const std::string &key, const std::string &message) {
    char output[41] = {};
    hmac_sha1(message.data(), static_cast<int>(message.size()), output, key.data(),
              static_cast<int>(key.size()));
    return output;
}

TEST(Hmac, KnownMessages) { // RFC 2202
    struct Case {
        std::string key, message, digest;
    };
    const Case cases[] = {
        {std::string(20, '\x0b'), "Hi There", "b617318655057264e28bc0b6fb378c8ef146be00"},
        {"Jefe", "what do ya want for nothing?", "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79"},
        {std::string(20, '\xaa'), std::string(50, '\xdd'), "125d7342b9ac11cd91a39af48aa17b4f63f175d3"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(hmac(c.key, c.message), c.digest);
}

TEST(Hmac, AgreesWithOpensslUpToTheLongestKey) {
    std::mt19937 random(7);
    for (size_t key_length = 0; key_length <= 64; key_length++) {
        std::string key(key_length, '\0'), message(random() % 200, '\0');
        for (char &c : key)
            c = static_cast<char>(random());
        for (char &c : message)
            c = static_cast<char>(random());
        ASSERT_EQ(hmac(key, message), openssl_hmac(key, message)) << key_length;
    }
    EXPECT_EQ(hmac(std::string(65, 'k'), "message"), "");
}

TEST(Base64, Vectors) { // RFC 4648, 10
    const std::pair<std::string, std::string> cases[] = {
        {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}};
    for (const auto &[plain, encoded] : cases) {
        char text[16] = {};
        size_t length = 0;
        ASSERT_EQ(base64_encode(bytes_of(plain).data(), plain.size(), text, &length), 0);
        EXPECT_EQ(std::string(text, length), encoded);
        uint8_t decoded[16] = {};
        ASSERT_EQ(base64_decode(encoded.data(), encoded.size(), decoded, &length), 0);
        EXPECT_EQ(std::string(decoded, decoded + length), plain);
    }
    char text[4];
    size_t length = 0;
    EXPECT_EQ(base64_encode(nullptr, 1, text, &length), -1);
    EXPECT_EQ(base64_encode(bytes_of("f").data(), 0, text, &length), -1);
    EXPECT_EQ(base64_encode(bytes_of("f").data(), 1, nullptr, &length), -1);
}

TEST(Base64, RoundTripOfAnyBytesInExactRoom) {
    std::mt19937 random(3);
    for (size_t length = 1; length < 200; length++) {
        Bytes data(length);
        for (uint8_t &byte : data)
            byte = static_cast<uint8_t>(random());
        std::vector<char> text((length + 2) / 3 * 4);
        size_t text_length = 0, data_length = 0;
        ASSERT_EQ(base64_encode(data.data(), length, text.data(), &text_length), 0);
        ASSERT_EQ(text_length, text.size());
        Bytes back(text_length / 4 * 3);
        ASSERT_EQ(base64_decode(text.data(), text_length, back.data(), &data_length), 0);
        back.resize(data_length);
        ASSERT_EQ(back, data);
    }
}

TEST(Base64, RefusesWhatIsNotBase64) {
    uint8_t output[16];
    size_t length = 0;
    for (std::string text : {"", "Zg=", "Zg", "Z===", "====", "Zg==Zg==", "Zm9v!m9v", "Zh==", "Zm9="})
        EXPECT_EQ(base64_decode(text.data(), text.size(), output, &length), -1) << text;
    EXPECT_EQ(base64_decode("Zm\0v", 4, output, &length), -1);
    EXPECT_EQ(base64_decode(nullptr, 4, output, &length), -1);
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
