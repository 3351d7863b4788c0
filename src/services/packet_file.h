// SPDX-License-Identifier: Apache-2.0
// A pcap stream cut at a whole packet (draft-ietf-opsawg-pcap).
#pragma once

#include <cstddef>
#include <cstdint>

// Follows a stream piece by piece and says how much of it is made of whole packets. Of one thread.
class PacketLength {
  public:
    void take(const uint8_t *bytes, size_t count);
    size_t whole() const { return whole_; } // bytes up to the end of the last whole packet

  private:
    static constexpr size_t FILE_HEADER = 24, PACKET_HEADER = 16;
    void start_packet();
    uint8_t header_[FILE_HEADER] = {};
    size_t header_size_ = FILE_HEADER; // of the header that is being read
    size_t in_header_ = 0;
    size_t left_in_packet_ = 0;
    size_t seen_ = 0, whole_ = 0;
    bool swapped_ = false;
};
