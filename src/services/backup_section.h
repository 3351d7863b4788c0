// SPDX-License-Identifier: Apache-2.0
// How the reading side builds the sections of its document.
#pragma once

#include <utility>

#include "core/json_path.h"
#include "properties/field.h"

namespace backup {

// Hands a section to the document. 0; -1 without one, or when memory ran out.
inline int add_section(json_object *document, const char *name, JsonRoot section) {
    return JsonSetObj(document, nullptr, name, std::move(section)) == 1 ? 0 : -1;
}

// Adds what the record gives. 0 or -1.
inline int add_rows(Fields rows, const void *record, json_object *section) {
    return write_given_document(rows, record, section) < 0 ? -1 : 0;
}

} // namespace backup
