// SPDX-License-Identifier: Apache-2.0
#include "sim/router/images.h"

#include <filesystem>

namespace router {

bool share_images() {
    namespace fs = std::filesystem;
    std::error_code error;
    if (!fs::is_directory("/tmp", error) || !fs::is_directory("/aptmp", error)) return true;
    if (fs::equivalent("/tmp", "/aptmp", error)) return true;
    bool made = true;
    for (const char *name : {"firmware.img", "qvtk_upgrade.bin"}) {
        const fs::path link = fs::path("/tmp") / name, image = fs::path("/aptmp") / name;
        if (fs::read_symlink(link, error) == image) continue;
        fs::remove(link, error);
        fs::create_symlink(image, link, error);
        made = made && !error;
    }
    return made;
}

} // namespace router
