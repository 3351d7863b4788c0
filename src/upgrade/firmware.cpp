// SPDX-License-Identifier: Apache-2.0
#include "upgrade/firmware.h"

#include <atomic>
#include <cstdio>
#include <strings.h>

#include "core/bus.h"
#include "core/files.h"
#include "core/handles.h"
#include "core/log.h"
#include "digests/digest.h"

namespace {

constexpr size_t PIECE = 1024;           // bytes given to the digest at a time
constexpr size_t READ_AHEAD = 16 * 1024; // bytes asked of the file system at a time

std::atomic<int> download_upgrade_result{-1};

} // namespace

Text<33> md5_of_file(const char *path) {
    Text<33> text = {};
    Descriptor opened = open_own_file(path);
    FileHandle file(opened ? fdopen(opened.get(), "rb") : nullptr);
    if (!file) return text;
    (void)opened.release();
    char read_ahead[READ_AHEAD];
    setvbuf(file.get(), read_ahead, _IOFBF, sizeof read_ahead);

    MD5_CTX context;
    MD5Init(&context);
    uint8_t piece[PIECE];
    for (size_t got = 0; (got = fread(piece, 1, sizeof piece, file.get())) > 0;)
        MD5Update(&context, piece, got);
    bool failed = ferror(file.get()) != 0;
    file.reset(); // before its buffer goes
    if (failed) return text;

    uint8_t digest[16];
    MD5Final(digest, &context);
    bytes_to_hex(digest, sizeof digest, text.text);
    return text;
}

bool same_digest(const char *one, const char *other) {
    return one && other && one[0] != '\0' && strcasecmp(one, other) == 0;
}

int start_upgrade(const char *path) {
    BusMessage message;
    message.text("downurl", path).integer("isreboot", 1);
    return set_dev_info("vrop", "upgrade", message);
}

void log_new_version(const char *version, const char *strategy) {
    auto record = format_text<256>("{\"newversion\": \"%s\", \"strategy\": \"%s\"}%s", version ? version : "",
                                   strategy ? strategy : "", "");
    LOG_UPGRADE("buf:%s", record.text);
}

void qvtk_set_download_upgrade_result(int result) {
    download_upgrade_result = result;
    LOG_UPGRADE("download upgrade result:%d", result);
}

int qvtk_get_download_upgrade_result() {
    return download_upgrade_result;
}
