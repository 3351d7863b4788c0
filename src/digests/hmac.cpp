// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "digests/digest.h"

namespace {

constexpr size_t BLOCK = 64;
constexpr size_t DIGEST = 20;

// One of the two hashes of RFC 2104: of the key padded with `pad`, then of the text.
void padded_sha1(const uint8_t key[BLOCK], uint8_t pad, const uint8_t *text, size_t length,
                 uint8_t digest[DIGEST]) {
    uint8_t padded[BLOCK];
    for (size_t i = 0; i < BLOCK; i++)
        padded[i] = key[i] ^ pad;
    sha1_context context;
    utils_sha1_init(&context);
    utils_sha1_starts(&context);
    utils_sha1_update(&context, padded, BLOCK);
    utils_sha1_update(&context, text, length);
    utils_sha1_finish(&context, digest);
    utils_sha1_free(&context);
    explicit_bzero(padded, sizeof padded);
}

} // namespace

char hb2hex(uint8_t value) {
    return "0123456789abcdef"[value & 0xf];
}

void bytes_to_hex(const uint8_t *bytes, size_t count, char *output) {
    for (size_t i = 0; i < count; i++) {
        output[2 * i] = hb2hex(bytes[i] >> 4);
        output[2 * i + 1] = hb2hex(bytes[i]);
    }
}

void hmac_sha1(const char *message, int message_length, char *output, const char *key, int key_length) {
    if (!message || !output || !key || message_length < 0 || key_length < 0) return;
    if (static_cast<size_t>(key_length) > BLOCK) return;

    uint8_t padded_key[BLOCK] = {};
    memcpy(padded_key, key, static_cast<size_t>(key_length));
    uint8_t digest[DIGEST];
    padded_sha1(padded_key, 0x36, reinterpret_cast<const uint8_t *>(message),
                static_cast<size_t>(message_length), digest);
    padded_sha1(padded_key, 0x5c, digest, DIGEST, digest);
    explicit_bzero(padded_key, sizeof padded_key);

    bytes_to_hex(digest, DIGEST, output);
}
