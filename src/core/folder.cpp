// SPDX-License-Identifier: Apache-2.0
#include "core/folder.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <memory>

#include "core/files.h"

namespace {

constexpr size_t LINE_MAX_BYTES = 4095;

struct FolderClose {
    void operator()(DIR *folder) const { closedir(folder); }
};

} // namespace

std::vector<std::string> folder_names(const std::string &path) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, FolderClose> folder(opendir(path.c_str()));
    if (!folder) return names;
    while (const dirent *entry = readdir(folder.get()))
        if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
    std::sort(names.begin(), names.end());
    return names;
}

std::string first_line(const std::string &path) {
    std::string text;
    if (!read_file(path.c_str(), LINE_MAX_BYTES, &text)) return "";
    return text.substr(0, text.find_first_of(std::string("\n\0", 2)));
}

long line_number(const std::string &line, long otherwise) {
    char *end = nullptr;
    errno = 0;
    const long number = strtol(line.c_str(), &end, 10);
    return end == line.c_str() || errno != 0 ? otherwise : number;
}
