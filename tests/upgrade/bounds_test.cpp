// SPDX-License-Identifier: Apache-2.0
// How much of an image is loaded.
#include <atomic>
#include <curl/curl.h>
#include <filesystem>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <thread>

#include <gmock/gmock.h>

#include "core/handles.h"
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

// Serves `length` bytes to everybody, without saying how many.
class Source {
  public:
    Source() {
        EXPECT_TRUE(bind(socket_.get(), reinterpret_cast<sockaddr *>(&address_), sizeof address_) == 0 &&
                    listen(socket_.get(), 1) == 0);
        thread_ = std::jthread([this] { serve(); });
    }
    ~Source() { shutdown(socket_.get(), SHUT_RDWR); }
    std::atomic<int64_t> length;

  private:
    void serve() const {
        constexpr char HEAD[] = "HTTP/1.0 200 OK\r\n\r\n";
        const std::string zeros(64 * 1024, '\0');
        char request[4096];
        for (Descriptor peer; (peer = Descriptor(accept(socket_.get(), nullptr, nullptr)));) {
            recv(peer.get(), request, sizeof request, 0);
            send(peer.get(), HEAD, sizeof HEAD - 1, MSG_NOSIGNAL);
            ssize_t sent = 0;
            for (int64_t left = length; left > 0 && sent >= 0; left -= sent)
                sent = send(peer.get(), zeros.data(), std::min<size_t>(zeros.size(), left), MSG_NOSIGNAL);
            shutdown(peer.get(), SHUT_WR);
        }
    }

    Descriptor socket_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    sockaddr_in address_ = {AF_INET, htons(8080), {htonl(INADDR_LOOPBACK)}, {}};
    std::jthread thread_;
};

constexpr char IMAGE[] = "/aptmp/image";
constexpr int64_t MEGABYTE = 1024 * 1024;

struct Row {
    const char *name;
    int64_t sent, announced, free; // bytes
    int result;
    int64_t loaded;
    const char *logged = "";
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
    {"disk too small", MEGABYTE, 0, DISK_RESERVE + MEGABYTE - 1, CURLE_WRITE_ERROR, -1,
     "image is longer than the 1048575 bytes that there is room for"},
    {"disk too small for what was announced", MEGABYTE, MEGABYTE, DISK_RESERVE + 9, CURLE_WRITE_ERROR, -1,
     "image is longer than the 9 bytes that there is room for"},
    {"disk full", 1, 1, DISK_RESERVE - 1, CURLE_WRITE_ERROR, -1,
     "image is longer than the 0 bytes that there is room for"},
    {"longest", IMAGE_LIMIT, 0, 1000 * MEGABYTE, 0, IMAGE_LIMIT},
    {"longer than any", IMAGE_LIMIT + 1, 0, 1000 * MEGABYTE, CURLE_FILESIZE_EXCEEDED, -1,
     "image is longer than the 268435456 bytes that there is room for"},
};

TEST(Image, IsLoadedWithinItsBounds) {
    set_default_logs();
    Source source;
    for (const Row &row : ROWS) {
        SCOPED_TRACE(row.name);
        clear_main_log();
        source.length = row.sent;
        free_bytes = static_cast<fsblkcnt_t>(row.free);
        EXPECT_EQ(fetch_image("http://127.0.0.1:8080/", IMAGE, row.announced, ProgressMeter::hidden),
                  row.result);
        std::error_code none;
        const auto size = static_cast<int64_t>(std::filesystem::file_size(IMAGE, none));
        EXPECT_EQ(size, row.loaded);
        EXPECT_TRUE(row.logged[0] == '\0' || has_logged(row.logged));
    }
}

} // namespace
