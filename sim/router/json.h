// SPDX-License-Identifier: Apache-2.0
// Short forms over json-c for the simulated router. Members are read leniently: a missing one, or one of
// another type, reads as the default.
#pragma once

#include <stdexcept>
#include <string>

#include "core/handles.h"

namespace router {

inline JsonRoot parse_json(const std::string &text) {
    json_tokener_error error = json_tokener_success;
    JsonRoot root(json_tokener_parse_verbose(text.c_str(), &error));
    if (error != json_tokener_success)
        throw std::runtime_error(std::string("not JSON: ") + json_tokener_error_desc(error));
    return root;
}

inline std::string json_text(json_object *value) {
    return json_object_to_json_string_ext(value, JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE);
}

inline JsonRoot copy_json(json_object *value) {
    json_object *copy = nullptr;
    if (value && json_object_deep_copy(value, &copy, nullptr) != 0) throw std::runtime_error("out of memory");
    return JsonRoot(copy);
}

inline json_object *member(json_object *object, const std::string &name) {
    json_object *value = nullptr;
    json_object_object_get_ex(object, name.c_str(), &value);
    return value;
}

inline std::string text_of(json_object *object, const std::string &name) {
    json_object *value = member(object, name);
    return value ? json_object_get_string(value) : "";
}

inline int integer_of(json_object *object, const std::string &name, int otherwise = 0) {
    json_object *value = member(object, name);
    return value ? json_object_get_int(value) : otherwise;
}

// 0 for what is no array.
inline std::size_t length_of(json_object *array) {
    return json_object_is_type(array, json_type_array) ? json_object_array_length(array) : 0;
}

inline json_object *element(json_object *array, std::size_t index) {
    return index < length_of(array) ? json_object_array_get_idx(array, index) : nullptr;
}

inline void put(json_object *object, const std::string &name, JsonRoot value) {
    json_object_object_add(object, name.c_str(), value.release());
}

inline void put(json_object *object, const std::string &name, const std::string &value) {
    put(object, name, JsonRoot(json_object_new_string_len(value.data(), static_cast<int>(value.size()))));
}

inline void put(json_object *object, const std::string &name, int value) {
    put(object, name, JsonRoot(json_object_new_int(value)));
}

inline JsonRoot new_object() {
    return JsonRoot(json_object_new_object());
}

} // namespace router
