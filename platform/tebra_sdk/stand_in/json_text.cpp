// SPDX-License-Identifier: Apache-2.0
#include "json_text.h"

#include "core/json_parse.h"

static constexpr int MAX_DEPTH = 64;

JsonRoot parse_json(const std::string &text) {
    return parse_document(text, JSON_TOKENER_STRICT, MAX_DEPTH);
}

std::string json_text(const JsonRoot &root) {
    const char *text =
        json_object_to_json_string_ext(root.get(), JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE);
    return text ? text : "{}";
}
