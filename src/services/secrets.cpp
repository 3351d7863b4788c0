// SPDX-License-Identifier: Apache-2.0
#include "services/secrets.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "core/bus.h"
#include "core/registration.h"
#include "digests/digest.h"

namespace {

constexpr char MASK[] = "****";
constexpr size_t SHORTEST_VALUE = 4;

struct Source {
    const char *object, *method;
};
constexpr Source SOURCES[] = {
    {"vrop.webwifisimple", "get"},   {"vrop.wifi.1.ap", "list"},
    {"vrop.wifi.2.ap", "list"},      {"vrop.wifi.1.apclient", "get"},
    {"vrop.wifi.2.apclient", "get"}, {"vrop.waninfo", "get"},
    {"vrop.devinfo", "getaccount"},  {"vrop.fota", "get"},
    {"vrop.qvtkconfig", "get"},
};

bool is_name_character(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

// "productKey" is a name, not a secret; "monkey" is no key either, but masking one too many does no harm.
bool is_secret_name(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](char each) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
    });
    if (name == "productkey" || name == "product_key") return false;
    constexpr const char *PARTS[] = {"pwd", "passw", "passphrase", "secret", "key"};
    return std::any_of(std::begin(PARTS), std::end(PARTS),
                       [&](const char *part) { return name.find(part) != std::string::npos; });
}

size_t skip(const std::string &text, size_t at, const char *characters) {
    return std::min(text.find_first_not_of(characters, at), text.size());
}

// Where a value that begins behind its opening quotation mark ends: at the mark that has as many backslashes
// before it as the opening one, or with the text, which may be cut.
size_t quoted_end(const std::string &text, size_t from, size_t backslashes) {
    for (size_t at = from; at < text.size(); at++) {
        const size_t first = at;
        while (at < text.size() && text[at] == '\\')
            at++;
        if (at < text.size() && text[at] == '"' && at - first == backslashes) return first;
    }
    return text.size();
}

// The piece of a value behind a name: from where to where it is masked. False when no value follows.
bool value_behind(const std::string &text, size_t at, size_t *from, size_t *to) {
    at = skip(text, at, "\\\"");
    const size_t sign = skip(text, at, " \t");
    if (sign >= text.size() || (text[sign] != ':' && text[sign] != '=')) return false;
    at = skip(text, sign + 1, " \t");
    const size_t marks = skip(text, at, "\\");
    if (marks < text.size() && text[marks] == '"') {
        *from = marks + 1;
        *to = quoted_end(text, *from, marks - at);
    } else {
        *from = at;
        *to = std::min(text.find_first_of(" \t,;}]", at), text.size());
    }
    return *to > *from;
}

std::string masked_by_name(const std::string &text) {
    std::string result;
    for (size_t at = 0; at < text.size();) {
        if (!is_name_character(text[at])) {
            result += text[at++];
            continue;
        }
        size_t end = at;
        while (end < text.size() && is_name_character(text[end]))
            end++;
        const std::string name = text.substr(at, end - at);
        size_t from = 0;
        size_t to = 0;
        result += name;
        at = end;
        if (!is_secret_name(name) || !value_behind(text, end, &from, &to)) continue;
        result += text.substr(end, from - end) + MASK;
        at = to;
    }
    return result;
}

void add_value(const char *value, std::vector<std::string> *values) {
    if (value != nullptr && strlen(value) >= SHORTEST_VALUE) values->emplace_back(value);
}

// Base64 is how accounts are stored; the password itself may stand in a log too.
void add_decoded(const char *value, std::vector<std::string> *values) {
    std::string decoded(strlen(value) + 4, '\0');
    size_t length = 0;
    if (base64_decode(value, strlen(value), reinterpret_cast<uint8_t *>(decoded.data()), &length) != 0)
        return;
    add_value(decoded.substr(0, length).c_str(), values);
}

void add_members(json_object *value, std::vector<std::string> *values) {
    if (json_object_is_type(value, json_type_array))
        for (size_t i = 0; i < json_object_array_length(value); i++)
            add_members(json_object_array_get_idx(value, i), values);
    if (!json_object_is_type(value, json_type_object)) return;
    json_object_object_foreach(value, name, member) {
        if (!json_object_is_type(member, json_type_string))
            add_members(member, values);
        else if (is_secret_name(name)) {
            add_value(json_object_get_string(member), values);
            add_decoded(json_object_get_string(member), values);
        }
    }
}

} // namespace

std::string masked(const std::string &text, const std::vector<std::string> &values) {
    std::string result = masked_by_name(text);
    for (const std::string &value : values)
        for (size_t at = result.find(value); at != std::string::npos;
             at = result.find(value, at + strlen(MASK)))
            result.replace(at, value.size(), MASK);
    return result;
}

std::vector<std::string> present_secrets() {
    std::vector<std::string> values;
    add_value(register_config.device_secret, &values);
    add_value(register_config.product_secret, &values);
    for (const Source &source : SOURCES) {
        JsonRoot root;
        add_members(get_dev_info(source.object, source.method, &root), &values);
    }
    return values;
}
