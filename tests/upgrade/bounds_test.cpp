// SPDX-License-Identifier: Apache-2.0
// How much of an image is loaded.
#include <curl/curl.h>
#include <filesystem>
#include <sys/statvfs.h>

#include "support/loopback_server.h"
#include "support/main_log.h"
#include "upgrade/firmware.h"

static fsblkcnt_t free_bytes; // what the disk says

extern "C" {
int __real_fstatvfs(int file, struct statvfs *disk);
int __wrap_fstatvfs(int file, struct statvfs *disk) {
    const int result = __real_fstatvfs(file, disk);
    disk->f_frsize = 1;
    disk->f_bavail = free_bytes;
    return result;
}
}

namespace {

// Sends so many bytes, without saying how many.
void send_zeros(int peer, int64_t length) {
    constexpr char HEAD[] = "HTTP/1.0 200 OK\r\n\r\n";
    const std::string zeros(64 * 1024, '\0');
    char request[4096];
    recv(peer, request, sizeof request, 0);
    send(peer, HEAD, sizeof HEAD - 1, MSG_NOSIGNAL);
    for (ssize_t sent = 0; length > 0 && sent >= 0; length -= sent)
        sent = send(peer, zeros.data(), std::min<size_t>(zeros.size(), length), MSG_NOSIGNAL);
}

constexpr char IMAGE[] = "/aptmp/image";
constexpr int64_t MEGABYTE = 1024 * 1024;

struct Row {
    const char *name;
    int64_t sent, announced, free; // bytes
    int result;
    int64_t loaded;
    const char *room = nullptr; // told in the log when there was too little of it
};

const Row ROWS[] = {
    {"as announced", MEGABYTE, MEGABYTE, 1000 * MEGABYTE, 0, MEGABYTE},
    {"at the end of the slack", 5 + 65536, 5, 1000 * MEGABYTE, 0, 5 + 65536},
    {"behind the slack", 5 + 65536 + 1, 5, 1000 * MEGABYTE, 0, 5 + 65536},
    {"far behind it", MEGABYTE, 5, 1000 * MEGABYTE, 0, 5 + 65536},
    {"nothing announced", MEGABYTE, 0, 1000 * MEGABYTE, 0, MEGABYTE},
    {"nothing sensible announced", MEGABYTE, -1, 1000 * MEGABYTE, 0, MEGABYTE},
    {"all announced", MEGABYTE, INT64_MAX, 1000 * MEGABYTE, 0, MEGABYTE},
    {"disk just large enough", MEGABYTE, 0, DISK_RESERVE + MEGABYTE, 0, MEGABYTE},
    {"disk too small", MEGABYTE, 0, DISK_RESERVE + MEGABYTE - 1, CURLE_WRITE_ERROR, -1, "1048575"},
    {"disk too small for what was announced", MEGABYTE, MEGABYTE, DISK_RESERVE + 9, CURLE_WRITE_ERROR, -1,
     "9"},
    {"disk full", 1, 1, DISK_RESERVE - 1, CURLE_WRITE_ERROR, -1, "0"},
    {"longest", IMAGE_LIMIT, 0, 1000 * MEGABYTE, 0, IMAGE_LIMIT},
    {"longer than any", IMAGE_LIMIT + 1, 0, 1000 * MEGABYTE, CURLE_FILESIZE_EXCEEDED, -1, "268435456"},
};

TEST(Image, IsLoadedWithinItsBounds) {
    set_default_logs();
    for (const Row &row : ROWS) {
        SCOPED_TRACE(row.name);
        clear_main_log();
        const LoopbackServer server([&](int peer) { send_zeros(peer, row.sent); });
        free_bytes = static_cast<fsblkcnt_t>(row.free);
        EXPECT_EQ(fetch_image(server.url("http").c_str(), IMAGE, row.announced, ProgressMeter::hidden),
                  row.result);
        std::error_code none;
        const auto size = static_cast<int64_t>(std::filesystem::file_size(IMAGE, none));
        EXPECT_EQ(size, row.loaded);
        if (row.room) {
            EXPECT_TRUE(has_logged("image is longer than the " + std::string(row.room) +
                                   " bytes that there is room for"));
        }
    }
}

} // namespace
