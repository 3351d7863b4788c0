// SPDX-License-Identifier: Apache-2.0
#include <bit>
#include <cstring>

#include "digests/block_hash.h"
#include "digests/digest.h"

namespace {

constexpr uint32_t INITIAL_STATE[5] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};

uint32_t load_big_endian(const uint8_t *bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

void store_big_endian(uint64_t value, uint8_t *bytes, size_t count) {
    for (size_t i = 0; i < count; i++)
        bytes[i] = static_cast<uint8_t>(value >> (8 * (count - 1 - i)));
}

// The function and the constant of step t (FIPS 180-4, 4.1.1 and 4.2.1).
uint32_t mix(size_t t, uint32_t b, uint32_t c, uint32_t d) {
    if (t < 20) return ((b & c) | (~b & d)) + 0x5a827999;
    if (t < 40) return (b ^ c ^ d) + 0x6ed9eba1;
    if (t < 60) return ((b & c) | (b & d) | (c & d)) + 0x8f1bbcdc;
    return (b ^ c ^ d) + 0xca62c1d6;
}

} // namespace

void utils_sha1_init(sha1_context *context) {
    memset(context, 0, sizeof *context);
}

void utils_sha1_free(sha1_context *context) {
    if (context) explicit_bzero(context, sizeof *context);
}

void utils_sha1_clone(sha1_context *to, const sha1_context *from) {
    *to = *from;
}

void utils_sha1_starts(sha1_context *context) {
    context->count = 0;
    memcpy(context->state, INITIAL_STATE, sizeof INITIAL_STATE);
}

void utils_sha1_process(sha1_context *context, const uint8_t block[64]) {
    uint32_t w[80];
    for (size_t t = 0; t < 16; t++)
        w[t] = load_big_endian(block + 4 * t);
    for (size_t t = 16; t < 80; t++)
        w[t] = std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);

    auto [a, b, c, d, e] = context->state;
    for (size_t t = 0; t < 80; t++) {
        uint32_t next = std::rotl(a, 5) + mix(t, b, c, d) + e + w[t];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    const uint32_t result[5] = {a, b, c, d, e};
    for (size_t i = 0; i < 5; i++)
        context->state[i] += result[i];
}

void utils_sha1_update(sha1_context *context, const uint8_t *data, size_t length) {
    hash_update(context, data, length, utils_sha1_process);
}

void utils_sha1_finish(sha1_context *context, uint8_t digest[20]) {
    uint8_t bits[HASH_LENGTH_FIELD];
    store_big_endian(context->count * 8, bits, sizeof bits);
    hash_close(context, bits, utils_sha1_process);
    for (size_t i = 0; i < 5; i++)
        store_big_endian(context->state[i], digest + 4 * i, 4);
}

void utils_sha1(const uint8_t *data, size_t length, uint8_t digest[20]) {
    sha1_context context;
    utils_sha1_init(&context);
    utils_sha1_starts(&context);
    utils_sha1_update(&context, data, length);
    utils_sha1_finish(&context, digest);
    utils_sha1_free(&context);
}
