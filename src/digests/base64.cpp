// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "digests/digest.h"

namespace {

constexpr char ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The six bits of a character; -1 for one outside the alphabet.
int sextet(char character) {
    if (character == '\0') return -1;
    const char *found = strchr(ALPHABET, character);
    return found ? static_cast<int>(found - ALPHABET) : -1;
}

// Decodes four characters of which the last `padding` are "=". False when one is outside the alphabet or the
// bits that the padding leaves over are not zero.
bool decode_group(const char *group, size_t padding, uint8_t *bytes) {
    uint32_t bits = 0;
    for (size_t i = 0; i < 4; i++) {
        int value = i < 4 - padding ? sextet(group[i]) : 0;
        if (value < 0) return false;
        bits = bits << 6 | static_cast<uint32_t>(value);
    }
    if (padding > 0 && (bits & ((1U << (8 * padding)) - 1)) != 0) return false;
    for (size_t i = 0; i < 3 - padding; i++)
        bytes[i] = static_cast<uint8_t>(bits >> (16 - 8 * i));
    return true;
}

} // namespace

int base64_encode(const uint8_t *input, size_t length, char *output, size_t *out_length) {
    if (!input || length == 0 || !output) return -1;
    size_t written = 0;
    for (size_t i = 0; i < length; i += 3) {
        size_t count = length - i < 3 ? length - i : 3;
        uint32_t bits = 0;
        for (size_t k = 0; k < 3; k++)
            bits = bits << 8 | (k < count ? input[i + k] : 0U);
        for (size_t k = 0; k < 4; k++)
            output[written++] = k <= count ? ALPHABET[bits >> (18 - 6 * k) & 0x3f] : '=';
    }
    if (out_length) *out_length = written;
    return 0;
}

int base64_decode(const char *input, size_t length, uint8_t *output, size_t *out_length) {
    if (!input || !output || !out_length || length == 0 || length % 4 != 0) return -1;
    size_t padding = input[length - 1] != '=' ? 0 : input[length - 2] != '=' ? 1 : 2;
    size_t written = 0;
    for (size_t i = 0; i < length; i += 4) {
        size_t missing = i + 4 == length ? padding : 0;
        if (!decode_group(input + i, missing, output + written)) return -1;
        written += 3 - missing;
    }
    *out_length = written;
    return 0;
}
