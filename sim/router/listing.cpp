// SPDX-License-Identifier: Apache-2.0
#include "sim/router/listing.h"

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

} // namespace router
