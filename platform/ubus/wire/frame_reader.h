// SPDX-License-Identifier: Apache-2.0
// Cuts what arrives on a socket into messages, however it was split up on the way.
#pragma once

#include <algorithm>
#include <cerrno>
#include <memory>
#include <sys/socket.h>
#include <vector>

#include "frame.h"

namespace wire {

struct Message {
    Header header{};
    std::unique_ptr<char[]> bytes; // the body and its padding
    const blob_attr *body() const { return reinterpret_cast<const blob_attr *>(bytes.get()); }
};

class FrameReader {
  public:
    enum class Read { progress, nothing, closed };

    // Reads once without waiting. Memory follows what has arrived, not what a header announces. Descriptors
    // that ride along are closed by the system, since no room is offered for them.
    Read fill(int fd) {
        make_room();
        ssize_t got = recv(fd, buffer_.data() + end_, buffer_.size() - end_, MSG_DONTWAIT);
        if (got > 0) {
            end_ += static_cast<size_t>(got);
            return Read::progress;
        }
        bool later = got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR);
        return later ? Read::nothing : Read::closed;
    }

    // Takes the next whole message. False when there is none yet, or none any more.
    bool next(Message *message) {
        if (broken_ || end_ - start_ < SMALLEST_MESSAGE) return false;
        const char *at = buffer_.data() + start_;
        const auto *body = reinterpret_cast<const blob_attr *>(at + HEADER_BYTES);
        broken_ = !body_length_allowed(body);
        if (broken_ || end_ - start_ < HEADER_BYTES + blob_raw_len(body)) return false;
        message->header = read_header(at);
        message->bytes = std::make_unique<char[]>(blob_pad_len(body));
        memcpy(message->bytes.get(), body, blob_raw_len(body));
        start_ += HEADER_BYTES + blob_raw_len(body);
        return true;
    }

    // An impossible length was announced; nothing behind it can be understood.
    bool broken() const { return broken_; }

  private:
    static constexpr size_t STEP = 4096;
    static constexpr size_t KEEP = 65536; // a larger buffer is given back once it is empty

    void make_room() {
        if (start_ == end_) {
            start_ = end_ = 0;
            if (buffer_.size() > KEEP) std::vector<char>().swap(buffer_);
        } else if (start_ > 0) {
            std::copy(buffer_.begin() + static_cast<ptrdiff_t>(start_),
                      buffer_.begin() + static_cast<ptrdiff_t>(end_), buffer_.begin());
            end_ -= start_;
            start_ = 0;
        }
        if (buffer_.size() - end_ < STEP) buffer_.resize(std::max(buffer_.size() * 2, end_ + STEP));
    }

    std::vector<char> buffer_;
    size_t start_ = 0;
    size_t end_ = 0;
    bool broken_ = false;
};

} // namespace wire
