// SPDX-License-Identifier: Apache-2.0
#include "sim/router/listing.h"

#include <filesystem>

#include "sim/router/world.h"

namespace router {

std::string listing() {
    std::string text, object;
    for (const Method &row : all_methods()) {
        if (object != row.object) {
            object = row.object;
            text += object + "\n";
        }
        std::string arguments;
        for (const Field &field : row.fields)
            arguments += (arguments.empty() ? "" : ", ") + describe(field) + (field.required ? "!" : "");
        text += "  " + std::string(row.name) + "(" + arguments + ")  " + row.help + "\n";
    }
    return text;
}

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
