// SPDX-License-Identifier: Apache-2.0
// The files that Linux shows in /sys and /proc, which may be missing, empty or odd. Any thread.
#pragma once

#include <string>
#include <vector>

// The names in a folder, sorted, without those that begin with a dot; none when it cannot be read.
std::vector<std::string> folder_names(const std::string &path);

// The first line of a small file, without its end; "" when there is none. At most 4095 bytes are read.
std::string first_line(const std::string &path);

// The decimal number that the line begins with, `otherwise` when there is none or it does not fit.
long line_number(const std::string &line, long otherwise);
