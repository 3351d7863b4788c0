// SPDX-License-Identifier: Apache-2.0
// JSON texts of unknown origin.
#pragma once
#include "core/json_parse.h"
#include <string>

namespace cloudsim {

// The document, or none when `text` is anything but one valid UTF-8 JSON value.
inline JsonRoot parse_json(const std::string &text) {
    return parse_document(text, JSON_TOKENER_STRICT | JSON_TOKENER_VALIDATE_UTF8);
}

inline std::string to_text(const JsonRoot &root) {
    return json_object_to_json_string_ext(root.get(),
                                          JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE);
}

inline void put(json_object *object, const char *name, const std::string &text) {
    json_object_object_add(object, name,
                           json_object_new_string_len(text.data(), static_cast<int>(text.size())));
}

inline void put(json_object *object, const char *name, std::int64_t number) {
    json_object_object_add(object, name, json_object_new_int64(number));
}

// A text member, or empty when it is absent or of another type.
inline std::string text_member(json_object *object, const char *name) {
    json_object *member = nullptr;
    if (!json_object_object_get_ex(object, name, &member) || !json_object_is_type(member, json_type_string))
        return "";
    return std::string(json_object_get_string(member),
                       static_cast<std::size_t>(json_object_get_string_len(member)));
}

} // namespace cloudsim
