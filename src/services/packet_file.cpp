// SPDX-License-Identifier: Apache-2.0
#include "services/packet_file.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t MAGIC_MICROSECONDS = 0xa1b2c3d4, MAGIC_NANOSECONDS = 0xa1b23c4d;

uint32_t number_at(const uint8_t *bytes, bool swapped) {
    uint32_t number = 0;
    memcpy(&number, bytes, sizeof number);
    return swapped ? __builtin_bswap32(number) : number;
}

} // namespace

// The header is complete: the file's own, or that of a packet, which says how many bytes follow.
void PacketLength::start_packet() {
    constexpr size_t CAPTURED_LENGTH = 8; // where it stands in a packet's header
    if (header_size_ == FILE_HEADER) {
        const uint32_t magic = number_at(header_, false);
        swapped_ = magic != MAGIC_MICROSECONDS && magic != MAGIC_NANOSECONDS;
        header_size_ = PACKET_HEADER;
        whole_ = seen_;
    } else {
        left_in_packet_ = number_at(header_ + CAPTURED_LENGTH, swapped_);
        if (left_in_packet_ == 0) whole_ = seen_;
    }
    in_header_ = 0;
}

void PacketLength::take(const uint8_t *bytes, size_t count) {
    while (count > 0) {
        const bool in_packet = left_in_packet_ > 0;
        const size_t taken = std::min(count, in_packet ? left_in_packet_ : header_size_ - in_header_);
        if (in_packet) {
            left_in_packet_ -= taken;
        } else {
            memcpy(header_ + in_header_, bytes, taken);
            in_header_ += taken;
        }
        bytes += taken;
        count -= taken;
        seen_ += taken;
        if (in_packet && left_in_packet_ == 0) whole_ = seen_;
        if (!in_packet && in_header_ == header_size_) start_packet();
    }
}
