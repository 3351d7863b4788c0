// SPDX-License-Identifier: Apache-2.0
// SHA-1 (FIPS 180-4), HMAC-SHA1 (RFC 2104), MD5 (RFC 1321) and base64 (RFC 4648). Streaming, without
// allocation; a context belongs to its caller. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

struct sha1_context {
    uint32_t state[5];
    uint64_t count; // bytes seen
    uint8_t block[64];
};
void utils_sha1_init(sha1_context *context); // zeroes it
void utils_sha1_free(sha1_context *context); // zeroes it, so that no secret stays behind
void utils_sha1_clone(sha1_context *to, const sha1_context *from);
void utils_sha1_starts(sha1_context *context);
void utils_sha1_update(sha1_context *context, const uint8_t *data, size_t length);
void utils_sha1_finish(sha1_context *context, uint8_t digest[20]);
void utils_sha1_process(sha1_context *context, const uint8_t block[64]);
void utils_sha1(const uint8_t *data, size_t length, uint8_t digest[20]);

struct MD5_CTX {
    uint32_t state[4];
    uint64_t count; // bytes seen
    uint8_t block[64];
};
void MD5Init(MD5_CTX *context);
void MD5Update(MD5_CTX *context, const uint8_t *data, size_t length);
void MD5Final(uint8_t digest[16], MD5_CTX *context);
void MD5Transform(uint32_t state[4], const uint32_t block[16]);
void byteReverse(uint8_t *words,
                 unsigned count); // `count` 32-bit words between memory and little-endian order

// Writes 40 lower-case hex digits, without a terminator. A key longer than 64 bytes leaves the output
// untouched, and so does a null argument.
void hmac_sha1(const char *message, int message_length, char *output, const char *key, int key_length);
// The lower-case hex digit of the low four bits.
char hb2hex(uint8_t value);
// Writes 2 * count lower-case hex digits, without a terminator.
void bytes_to_hex(const uint8_t *bytes, size_t count, char *output);

// Base64 with padding. The encoder writes no terminator; `out_length` gets the bytes written (output must
// have room for (length + 2) / 3 * 4). 0; -1 for a null input or output or a length of 0.
int base64_encode(const uint8_t *input, size_t length, char *output, size_t *out_length);
// `output` must have room for length / 4 * 3 bytes. 0; -1 for null arguments or a text that is not base64.
int base64_decode(const char *input, size_t length, uint8_t *output, size_t *out_length);
