// SPDX-License-Identifier: Apache-2.0
// The one way in which texts of unknown origin become documents. Any thread.
#pragma once

#include <string_view>

#include "core/handles.h"

struct TokenerFree {
    void operator()(json_tokener *tokener) const { json_tokener_free(tokener); }
};
using JsonTokener = std::unique_ptr<json_tokener, TokenerFree>;

// The document of a text that is followed by a terminator, read with json-c's JSON_TOKENER_... flags and so
// many levels at most. Null when it is no JSON, and for the document "null".
inline JsonRoot parse_document(std::string_view text, int flags, int depth = JSON_TOKENER_DEFAULT_DEPTH) {
    const JsonTokener tokener(json_tokener_new_ex(depth));
    if (!tokener) return nullptr;
    json_tokener_set_flags(tokener.get(), flags);
    // the terminator goes in too: only it ends a bare number
    JsonRoot root(json_tokener_parse_ex(tokener.get(), text.data(), static_cast<int>(text.size()) + 1));
    return json_tokener_get_error(tokener.get()) == json_tokener_success ? std::move(root) : nullptr;
}
