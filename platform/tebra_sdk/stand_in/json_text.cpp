// SPDX-License-Identifier: Apache-2.0
#include "json_text.h"

namespace {

constexpr int MAX_DEPTH = 64;

struct TokenerFree {
    void operator()(json_tokener *tokener) const { json_tokener_free(tokener); }
};

} // namespace

JsonRoot parse_json(const std::string &text) {
    std::unique_ptr<json_tokener, TokenerFree> tokener(json_tokener_new_ex(MAX_DEPTH));
    if (!tokener) return nullptr;
    json_tokener_set_flags(tokener.get(), JSON_TOKENER_STRICT);
    // The terminator is handed over too: only it ends a bare number.
    JsonRoot root(json_tokener_parse_ex(tokener.get(), text.c_str(), static_cast<int>(text.size() + 1)));
    return json_tokener_get_error(tokener.get()) == json_tokener_success ? std::move(root) : nullptr;
}

std::string json_text(const JsonRoot &root) {
    const char *text =
        json_object_to_json_string_ext(root.get(), JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE);
    return text ? text : "{}";
}
