// SPDX-License-Identifier: Apache-2.0
// How much room a filesystem has, asked so that a dead disk cannot hold the asker.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct DiskSpace {
    int64_t total, free; // KiB
};

// The same by the asker itself, of a filesystem that is part of the router. Any thread.
std::optional<DiskSpace> own_disk_space(const char *path);

// Nothing when the path has no filesystem or does not answer within two seconds. Who asks while another's
// question about the path is open shares it, so that a dead disk costs one thread and no more. Any thread.
std::optional<DiskSpace> disk_space(const std::string &path);
