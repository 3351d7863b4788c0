// SPDX-License-Identifier: Apache-2.0
// Loading an image, into a file that nobody else has, and no more of it than there may be.
#include <algorithm>
#include <sys/statvfs.h>

#include "core/files.h"
#include "core/log.h"
#include "https/transfer.h"
#include "upgrade/firmware.h"

namespace {

struct Bound {
    int64_t bytes;
    CURLcode beyond; // what a longer image comes to
};

// The file that is written, and how much it may hold.
struct Sink {
    int file;
    Bound bound;
    int64_t written = 0;
    bool full = false;
};

Bound bound_of_size(int64_t announced) {
    if (announced <= 0) return {IMAGE_LIMIT, CURLE_FILESIZE_EXCEEDED};
    return {announced + std::min(ANNOUNCED_SLACK, INT64_MAX - announced), CURLE_OK};
}

// A disk that does not know its size bounds nothing.
Bound bound_for(int file, int64_t announced) {
    const Bound bound = bound_of_size(announced);
    struct statvfs disk = {};
    if (fstatvfs(file, &disk) != 0 || disk.f_blocks == 0) return bound;
    const auto room = static_cast<int64_t>(disk.f_bavail) * static_cast<int64_t>(disk.f_frsize);
    if (room - DISK_RESERVE >= bound.bytes) return bound;
    return {std::max<int64_t>(room - DISK_RESERVE, 0), CURLE_WRITE_ERROR};
}

size_t take_piece(void *data, size_t size, size_t count, void *destination) {
    auto *sink = static_cast<Sink *>(destination);
    const size_t length = size * count;
    const auto taken = static_cast<size_t>(
        std::min<int64_t>(static_cast<int64_t>(length), sink->bound.bytes - sink->written));
    if (!write_all(sink->file, static_cast<const char *>(data), taken)) return 0;
    sink->written += static_cast<int64_t>(taken);
    sink->full = taken < length;
    return taken;
}

CURLcode load(Transfer *transfer, const char *address, Sink *sink, ProgressMeter meter) {
    transfer->url(address).trust();
    if (meter == ProgressMeter::shown) transfer->progress_meter();
    const CURLcode result = transfer->write_with(take_piece, sink)
                                .whole_limit(IMAGE_SECONDS)
                                .connect_limit(IMAGE_CONNECT_SECONDS)
                                .no_signals()
                                .undecoded()
                                .perform();
    if (const char *why = transfer->distrust(result)) LOG("server not verified: %s", why);
    if (!sink->full) return result;
    if (sink->bound.beyond != CURLE_OK)
        LOG("image is longer than the %lld bytes that there is room for",
            static_cast<long long>(sink->bound.bytes));
    return sink->bound.beyond;
}

} // namespace

int fetch_image(const char *address, const char *path, int64_t announced, ProgressMeter meter) {
    const Descriptor file = create_private_file(path);
    if (!file) return FETCH_NO_FILE;
    Sink sink = {.file = file.get(), .bound = bound_for(file.get(), announced)};
    Transfer transfer;
    const int result = transfer ? load(&transfer, address, &sink, meter) : FETCH_NO_LIBRARY;
    if (result != 0) unlink(path);
    return result;
}
