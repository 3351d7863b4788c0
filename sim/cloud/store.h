// SPDX-License-Identifier: Apache-2.0
// Files given to the server and files that devices sent it.
#pragma once
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace cloudsim {

// A name that is safe as a file's and in a path: up to 128 letters, digits, ".", "_", "-" and ":", not
// beginning with a dot.
bool is_plain_name(const std::string &name);
// Throws std::invalid_argument when it is not.
void require_plain_name(const std::string &name);

// Any thread.
class Store {
  public:
    explicit Store(std::string directory); // empty: memory alone

    // False when the name is not plain or the file cannot be written (mode 0600, whole or not at all).
    bool put(const std::string &name, const std::string &bytes);
    // Also what an earlier server left in the directory.
    std::optional<std::string> get(const std::string &name) const;

  private:
    std::string directory_;
    mutable std::mutex mutex_;
    std::map<std::string, std::string> files_;
};

} // namespace cloudsim
