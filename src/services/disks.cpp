// SPDX-License-Identifier: Apache-2.0
#include "services/disks.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <unistd.h>
#include <utility>

#include "core/files.h"
#include "core/folder.h"
#include "core/json_path.h"
#include "services/disk_space.h"
#include "services/service.h"

namespace {

constexpr char BLOCK_DEVICES[] = "/sys/block/";
constexpr char MOUNT_TABLE[] = "/proc/mounts";
constexpr size_t TABLE_MAX = 256 * 1024;

bool is_behind_usb(const std::string &folder) {
    char target[PATH_MAX] = {};
    return readlink(folder.c_str(), target, sizeof target - 1) > 0 &&
           std::string(target).find("/usb") != std::string::npos;
}

// An empty card reader has a size of 0.
bool is_external(const std::string &name) {
    const std::string folder = BLOCK_DEVICES + name;
    if (line_number(first_line(folder + "/size"), -1) == 0) return false;
    return line_number(first_line(folder + "/removable"), 0) == 1 || is_behind_usb(folder);
}

// "/dev/sda1", ... or "/dev/sda" for a disk that holds one filesystem.
std::vector<std::string> parts_of(const std::string &disk) {
    std::vector<std::string> devices;
    const std::string folder = BLOCK_DEVICES + disk + "/";
    for (const std::string &name : folder_names(folder))
        if (name.rfind(disk, 0) == 0 && access((folder + name).append("/partition").c_str(), F_OK) == 0)
            devices.push_back("/dev/" + name);
    if (devices.empty()) devices.push_back("/dev/" + disk);
    return devices;
}

// Blanks and backslashes stand in the table as a backslash and three octal digits.
std::string without_escapes(const std::string &word) {
    std::string text;
    for (size_t at = 0; at < word.size(); at++) {
        if (word[at] != '\\' || word.size() - at < 4) {
            text += word[at];
            continue;
        }
        text += static_cast<char>(strtol(word.substr(at + 1, 3).c_str(), nullptr, 8));
        at += 3;
    }
    return text;
}

// The words of a line, at most four.
std::vector<std::string> words_of(const std::string &line) {
    std::vector<std::string> words;
    size_t at = 0;
    while (words.size() < 4) {
        at = line.find_first_not_of(" \t", at);
        if (at == std::string::npos) break;
        const size_t end = std::min(line.find_first_of(" \t", at), line.size());
        words.push_back(without_escapes(line.substr(at, end - at)));
        at = end;
    }
    return words;
}

bool has_option(const std::string &options, const std::string &wanted) {
    return ("," + options + ",").find("," + wanted + ",") != std::string::npos;
}

Disk disk_of(const std::string &device, const std::vector<Mount> &mounts) {
    Disk disk = {"", device, "", 0, 0, DISK_NOT_MOUNTED};
    const auto mount =
        std::find_if(mounts.begin(), mounts.end(), [&](const Mount &each) { return each.device == device; });
    if (mount == mounts.end()) return disk;
    disk.path = mount->path;
    disk.filesystem = mount->filesystem;
    const std::optional<DiskSpace> space = disk_space(mount->path);
    if (!space) return disk;
    disk.total = space->total;
    disk.free = space->free;
    disk.status = mount->read_only ? DISK_READ_ONLY : DISK_GOOD;
    return disk;
}

JsonRoot disk_object(const Disk &disk) {
    JsonRoot entry(json_object_new_object());
    JsonSetStr(entry.get(), nullptr, "path", disk.path.c_str());
    JsonSetStr(entry.get(), nullptr, "device", disk.device.c_str());
    JsonSetStr(entry.get(), nullptr, "fs", disk.filesystem.c_str());
    JsonSetInt64(entry.get(), nullptr, "total", disk.total);
    JsonSetInt64(entry.get(), nullptr, "free", disk.free);
    JsonSetBool(entry.get(), nullptr, "readOnly", disk.status == DISK_READ_ONLY);
    JsonSetInt64(entry.get(), nullptr, "status", disk.status);
    return entry;
}

ServiceAnswer list_disks(const ServiceRequest &) {
    JsonRoot disks(json_object_new_array());
    for (const Disk &disk : external_disks())
        JsonAppend(disks.get(), disk_object(disk));
    return answer_with_list("disks", std::move(disks));
}

constexpr Service DISK_CHECK = {.name = "diskCheck", .entry = "diskCheck_call ...\n"};

} // namespace

std::vector<Mount> mounts_of(const std::string &table) {
    std::vector<Mount> mounts;
    for (size_t at = 0; at < table.size();) {
        const size_t end = std::min(table.find('\n', at), table.size());
        const std::vector<std::string> words = words_of(table.substr(at, end - at));
        if (words.size() == 4) mounts.push_back({words[0], words[1], words[2], has_option(words[3], "ro")});
        at = end + 1;
    }
    return mounts;
}

std::vector<Disk> external_disks() {
    std::string table;
    read_file(MOUNT_TABLE, TABLE_MAX, &table);
    const std::vector<Mount> mounts = mounts_of(table);
    std::vector<Disk> disks;
    for (const std::string &name : folder_names(BLOCK_DEVICES))
        if (is_external(name))
            for (const std::string &device : parts_of(name))
                disks.push_back(disk_of(device, mounts));
    return disks;
}

int diskCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(DISK_CHECK, {handle, id, parameters}, list_disks);
}
