// SPDX-License-Identifier: Apache-2.0
// What SHA-1 and MD5 do alike: they take a message in blocks of 64 bytes and close it with a one bit, zeros
// and the message's length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

inline constexpr size_t HASH_BLOCK = 64;
inline constexpr size_t HASH_LENGTH_FIELD = 8; // the message length in bits, at the end of the last block

// Adds bytes to a context with `count` and `block`; `take_block(context, bytes)` consumes each full block.
template <typename Context, typename TakeBlock>
void hash_update(Context *context, const uint8_t *data, size_t length, TakeBlock take_block) {
    if (length == 0) return;
    size_t held = context->count % HASH_BLOCK;
    context->count += length;
    if (held > 0 && held + length >= HASH_BLOCK) {
        size_t missing = HASH_BLOCK - held;
        memcpy(context->block + held, data, missing);
        take_block(context, context->block);
        data += missing;
        length -= missing;
        held = 0;
    }
    for (; length >= HASH_BLOCK; data += HASH_BLOCK, length -= HASH_BLOCK)
        take_block(context, data);
    if (length > 0) memcpy(context->block + held, data, length);
}

// The padding that follows a message of `count` bytes; `length_field` holds its length in bits, in the hash's
// own byte order.
template <typename Context, typename TakeBlock>
void hash_close(Context *context, const uint8_t length_field[HASH_LENGTH_FIELD], TakeBlock take_block) {
    static constexpr uint8_t PADDING[HASH_BLOCK] = {0x80};
    constexpr size_t ROOM = HASH_BLOCK - HASH_LENGTH_FIELD;
    size_t held = context->count % HASH_BLOCK;
    hash_update(context, PADDING, held < ROOM ? ROOM - held : HASH_BLOCK + ROOM - held, take_block);
    hash_update(context, length_field, HASH_LENGTH_FIELD, take_block);
}
