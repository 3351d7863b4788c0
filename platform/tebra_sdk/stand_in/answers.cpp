// SPDX-License-Identifier: Apache-2.0
#include "answers.h"

#include "json_text.h"

namespace {

JsonRoot with_code(int code) {
    JsonRoot root(json_object_new_object());
    json_object_object_add(root.get(), "code", json_object_new_int(code));
    return root;
}

void add_text(const JsonRoot &root, const char *key, const char *text) {
    json_object_object_add(root.get(), key, json_object_new_string(text));
}

} // namespace

Answer plain_answer(int code) {
    return {code, json_text(with_code(code))};
}

Answer refusal(int code, const char *message) {
    JsonRoot root = with_code(code);
    add_text(root, "message", message);
    return {code, json_text(root)};
}

Answer set_answer(int code, const char *reply) {
    JsonRoot root = with_code(code);
    if (*reply) add_text(root, "reply", reply);
    return {code, json_text(root)};
}

Answer service_answer(int code, const char *json) {
    JsonRoot root = with_code(code);
    JsonRoot data = parse_json(json ? json : "{}");
    if (!data) data.reset(json_object_new_string(json));
    json_object_object_add(root.get(), "data", data.release());
    return {code, json_text(root)};
}

Answer service_refusal(int code, const char *message) {
    JsonRoot root = with_code(code);
    json_object_object_add(root.get(), "data", json_object_new_object());
    add_text(root, "message", message);
    return {code, json_text(root)};
}
