// SPDX-License-Identifier: Apache-2.0
#include "core/files.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

#include "core/handles.h"

bool read_file(const char *path, size_t limit, std::string *content) {
    Descriptor file(open(path, O_RDONLY | O_CLOEXEC));
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
    Descriptor file(open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!file) return false;
    // the draft may be left over with another mode, and the new one is subject to the umask
    bool written = fchmod(file.get(), mode) == 0 && write_all(file.get(), content.data(), content.size()) &&
                   fsync(file.get()) == 0;
    if (written && rename(draft.c_str(), path) == 0) return true;
    int error = errno;
    unlink(draft.c_str());
    errno = error;
    return false;
}
