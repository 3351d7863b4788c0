// SPDX-License-Identifier: Apache-2.0
// "diskCheck": the external disks, and the list of them that formatting goes by.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

enum DiskStatus { DISK_GOOD = 0, DISK_READ_ONLY = 1, DISK_NOT_MOUNTED = 2 };

struct Disk {
    std::string path;       // where it is mounted; "" when it is not
    std::string device;     // "/dev/sda1"
    std::string filesystem; // "" when it is not mounted
    int64_t total, free;    // KiB; 0 when nobody can tell
    DiskStatus status;
};

// The partitions of removable disks and of disks behind USB, or the disk itself where it has none, as Linux
// shows them in /sys/block and /proc/mounts. A disk that does not answer within two seconds counts as not
// mounted. Any thread.
std::vector<Disk> external_disks();

// A line of the mount table (fstab(5), its \040 for a blank undone).
struct Mount {
    std::string device, path, filesystem;
    bool read_only;
};
std::vector<Mount> mounts_of(const std::string &table);

// Answers 200 {"disks":[{"path","device","fs","total","free","readOnly","status"}]}: total and free in KiB;
// status 0 good, 1 read-only, 2 present but not mounted.
int diskCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
