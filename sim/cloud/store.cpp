// SPDX-License-Identifier: Apache-2.0
#include "store.h"

#include "core/files.h"
#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace cloudsim {

bool is_plain_name(const std::string &name) {
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-:";
    return !name.empty() && name.size() <= 128 && name[0] != '.' &&
           name.find_first_not_of(plain) == std::string::npos;
}

void require_plain_name(const std::string &name) {
    if (!is_plain_name(name)) throw std::invalid_argument("\"" + name + "\" cannot be a file's name here");
}

Store::Store(std::string directory) : directory_(std::move(directory)) {}

bool Store::put(const std::string &name, const std::string &bytes) {
    if (!is_plain_name(name)) return false;
    std::lock_guard lock(mutex_);
    if (!directory_.empty() && !replace_file((directory_ + "/" + name).c_str(), bytes, 0600)) return false;
    files_[name] = bytes;
    return true;
}

std::optional<std::string> Store::get(const std::string &name) const {
    std::lock_guard lock(mutex_);
    auto found = files_.find(name);
    if (found != files_.end()) return found->second;
    std::string bytes;
    const bool kept = !directory_.empty() && is_plain_name(name) &&
                      read_file((directory_ + "/" + name).c_str(), std::string::npos, &bytes);
    return kept ? std::optional(bytes) : std::nullopt;
}

} // namespace cloudsim
