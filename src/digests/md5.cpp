// SPDX-License-Identifier: Apache-2.0
#include <bit>
#include <cstring>

#include "digests/block_hash.h"
#include "digests/digest.h"

namespace {

constexpr uint32_t INITIAL_STATE[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
constexpr size_t BLOCK_WORDS = 16;

// floor(2^32 * abs(sin(i + 1))), as RFC 1321, 3.4 lists them.
constexpr uint32_t SINES[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

// The mixing functions of the four rounds. The terms of the first two never share a bit, so they may be
// added, which lets the processor work out the one that does not wait for the step before.
struct RoundF {
    static constexpr size_t FIRST = 0, STRIDE = 1, START = 0;
    static constexpr int SHIFT[4] = {7, 12, 17, 22};
    static uint32_t mix(uint32_t x, uint32_t y, uint32_t z) { return z ^ (x & (y ^ z)); }
};
struct RoundG {
    static constexpr size_t FIRST = 16, STRIDE = 5, START = 1;
    static constexpr int SHIFT[4] = {5, 9, 14, 20};
    static uint32_t mix(uint32_t x, uint32_t y, uint32_t z) { return (x & z) + (y & ~z); }
};
struct RoundH {
    static constexpr size_t FIRST = 32, STRIDE = 3, START = 5;
    static constexpr int SHIFT[4] = {4, 11, 16, 23};
    static uint32_t mix(uint32_t x, uint32_t y, uint32_t z) { return x ^ y ^ z; }
};
struct RoundI {
    static constexpr size_t FIRST = 48, STRIDE = 7, START = 0;
    static constexpr int SHIFT[4] = {6, 10, 15, 21};
    static uint32_t mix(uint32_t x, uint32_t y, uint32_t z) { return y ^ (x | ~z); }
};

template <typename Round, size_t STEP>
[[gnu::always_inline]] inline void step(uint32_t &a, uint32_t b, uint32_t c, uint32_t d,
                                        const uint32_t *block) {
    a += SINES[Round::FIRST + STEP] + block[(Round::START + Round::STRIDE * STEP) % BLOCK_WORDS];
    a += Round::mix(b, c, d);
    a = b + std::rotl(a, Round::SHIFT[STEP % 4]);
}

// Sixteen steps; each writes the word that the four before it have read.
template <typename Round, size_t STEP = 0>
[[gnu::always_inline]] inline void round(uint32_t &a, uint32_t &b, uint32_t &c, uint32_t &d,
                                         const uint32_t *block) {
    step<Round, STEP>(a, b, c, d, block);
    step<Round, STEP + 1>(d, a, b, c, block);
    step<Round, STEP + 2>(c, d, a, b, block);
    step<Round, STEP + 3>(b, c, d, a, block);
    if constexpr (STEP + 4 < BLOCK_WORDS) round<Round, STEP + 4>(a, b, c, d, block);
}

void take_block(MD5_CTX *context, const uint8_t *bytes) {
    uint32_t words[BLOCK_WORDS];
    memcpy(words, bytes, HASH_BLOCK);
    byteReverse(reinterpret_cast<uint8_t *>(words), BLOCK_WORDS);
    MD5Transform(context->state, words);
}

} // namespace

void byteReverse(uint8_t *words, unsigned count) {
    if constexpr (std::endian::native == std::endian::little) return;
    for (unsigned i = 0; i < count; i++) {
        uint32_t word;
        memcpy(&word, words + 4 * i, 4);
        word = __builtin_bswap32(word);
        memcpy(words + 4 * i, &word, 4);
    }
}

void MD5Transform(uint32_t state[4], const uint32_t block[16]) {
    uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    round<RoundF>(a, b, c, d, block);
    round<RoundG>(a, b, c, d, block);
    round<RoundH>(a, b, c, d, block);
    round<RoundI>(a, b, c, d, block);
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
}

void MD5Init(MD5_CTX *context) {
    context->count = 0;
    memcpy(context->state, INITIAL_STATE, sizeof INITIAL_STATE);
}

void MD5Update(MD5_CTX *context, const uint8_t *data, size_t length) {
    hash_update(context, data, length, take_block);
}

void MD5Final(uint8_t digest[16], MD5_CTX *context) {
    const uint64_t bit_count = context->count * 8;
    uint8_t bits[HASH_LENGTH_FIELD];
    for (size_t i = 0; i < sizeof bits; i++)
        bits[i] = static_cast<uint8_t>(bit_count >> (8 * i));
    hash_close(context, bits, take_block);
    byteReverse(reinterpret_cast<uint8_t *>(context->state), 4);
    memcpy(digest, context->state, sizeof context->state);
    explicit_bzero(context, sizeof *context);
}
