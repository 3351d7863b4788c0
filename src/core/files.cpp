// SPDX-License-Identifier: Apache-2.0
#include "core/files.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr int NAME_ATTEMPTS = 8; // somebody may take the name between removal and creation

bool is_own(const struct stat &status) {
    return status.st_uid == geteuid() || status.st_uid == 0;
}

bool is_own_link(const char *path) {
    struct stat status = {};
    return lstat(path, &status) == 0 && S_ISLNK(status.st_mode) && is_own(status);
}

bool read_descriptor(const Descriptor &file, size_t limit, std::string *content) {
    if (!file) return false;
    std::string text;
    char piece[4096];
    while (text.size() < limit) {
        size_t room = limit - text.size();
        ssize_t got = read(file.get(), piece, room < sizeof piece ? room : sizeof piece);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return false;
        if (got == 0) break;
        text.append(piece, static_cast<size_t>(got));
    }
    *content = std::move(text);
    return true;
}

} // namespace

bool read_file(const char *path, size_t limit, std::string *content) {
    return read_descriptor(Descriptor(open(path, O_RDONLY | O_CLOEXEC)), limit, content);
}

Descriptor create_private_file(const char *path) {
    Descriptor file;
    for (int attempt = 0; !file && attempt < NAME_ATTEMPTS; attempt++) {
        if (unlink(path) != 0 && errno != ENOENT) return file;
        file.reset(open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!file && errno != EEXIST) return file;
    }
    return file;
}

Descriptor open_own_file(const char *path) {
    constexpr int HOW = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor file(open(path, HOW | O_NOFOLLOW));
    if (!file && errno == ELOOP && is_own_link(path)) file.reset(open(path, HOW));
    struct stat status = {};
    if (file && (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || !is_own(status))) {
        file.reset();
        errno = EPERM;
    }
    return file;
}

FileHandle open_own_stream(const char *path) {
    Descriptor file = open_own_file(path);
    FileHandle stream(file ? fdopen(file.get(), "r") : nullptr);
    if (stream) (void)file.release();
    return stream;
}

bool read_own_file(const char *path, size_t limit, std::string *content) {
    return read_descriptor(open_own_file(path), limit, content);
}

bool write_all(int file, const char *data, size_t length) {
    while (length > 0) {
        ssize_t written = write(file, data, length);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        data += written;
        length -= static_cast<size_t>(written);
    }
    return true;
}

bool replace_file(const char *path, const std::string &content, mode_t mode) {
    std::string draft = std::string(path) + ".bak";
    Descriptor file = create_private_file(draft.c_str());
    if (!file) return false;
    bool written = fchmod(file.get(), mode) == 0 && write_all(file.get(), content.data(), content.size()) &&
                   fsync(file.get()) == 0;
    if (written && rename(draft.c_str(), path) == 0) return true;
    int error = errno;
    unlink(draft.c_str());
    errno = error;
    return false;
}
