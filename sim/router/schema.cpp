// SPDX-License-Identifier: Apache-2.0
#include "sim/router/schema.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <cstring>

extern "C" {
#include <libubox/blobmsg.h>
}

#include "sim/router/json.h"

namespace router {
namespace {

bool among(const std::string &value, const char *choices) {
    return value.find('|') == std::string::npos &&
           ("|" + std::string(choices) + "|").find("|" + value + "|") != std::string::npos;
}

bool is_address(const std::string &value) {
    in_addr parsed{};
    return inet_pton(AF_INET, value.c_str(), &parsed) == 1;
}

bool is_address6(const std::string &value) {
    in6_addr parsed{};
    return inet_pton(AF_INET6, value.c_str(), &parsed) == 1;
}

bool are_addresses(std::string value, int max) {
    for (int count = 1; count <= max; count++) {
        std::size_t comma = value.find(',');
        std::string one = value.substr(0, comma);
        if (!one.empty() && !is_address(one) && !is_address6(one)) return false;
        if (comma == std::string::npos) return true;
        value.erase(0, comma + 1);
    }
    return false;
}

bool is_mac(const std::string &value) {
    std::string digits = spell_mac(value);
    return digits.size() == 12 &&
           std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
}

bool fits(const Field &field, json_object *value) {
    const bool is_integer = json_object_is_type(value, json_type_int);
    const bool is_text = json_object_is_type(value, json_type_string);
    const int64_t number = is_integer ? json_object_get_int64(value) : 0;
    const std::string text = is_text ? json_object_get_string(value) : "";
    switch (field.kind) {
    case Field::Kind::Integer:
        return is_integer && number >= field.min && number <= field.max;
    case Field::Kind::Number:
        return is_integer && among(std::to_string(number), field.choices);
    case Field::Kind::Text:
        return is_text && text.size() >= static_cast<std::size_t>(field.min) &&
               text.size() <= static_cast<std::size_t>(field.max);
    case Field::Kind::Choice:
        return is_text && among(text, field.choices);
    case Field::Kind::Address:
        return is_text && is_address(text);
    case Field::Kind::Address6:
        return is_text && (text.empty() || is_address6(text));
    case Field::Kind::Addresses:
        return is_text && are_addresses(text, field.max);
    case Field::Kind::Mac:
        return is_text && is_mac(text);
    }
    return false;
}

} // namespace

void check_arguments(Fields fields, json_object *arguments) {
    json_object_object_foreach(arguments, name, value) {
        auto field = std::find_if(fields.begin(), fields.end(),
                                  [&](const Field &row) { return std::strcmp(row.name, name) == 0; });
        if (field == fields.end()) throw Refused("unrecognized parameter: '" + std::string(name) + "'");
        if (!fits(*field, value)) throw Refused("parameter format incorrect: '" + std::string(name) + "'");
    }
    for (const Field &field : fields)
        if (field.required && !member(arguments, field.name))
            throw Refused("required parameter: '" + std::string(field.name) + "'");
}

std::string describe(const Field &field) {
    std::string name = field.name;
    const std::string range = std::to_string(field.min) + ".." + std::to_string(field.max);
    switch (field.kind) {
    case Field::Kind::Integer:
        return name + " " + range;
    case Field::Kind::Number:
    case Field::Kind::Choice:
        return name + " " + field.choices;
    case Field::Kind::Text:
        return name + " text(" + range + ")";
    case Field::Kind::Address:
        return name + " address";
    case Field::Kind::Address6:
        return name + " IPv6 address";
    case Field::Kind::Addresses:
        return name + " address,...";
    case Field::Kind::Mac:
        return name + " MAC";
    }
    return name;
}

int bus_type(const Field &field) {
    if (field.kind == Field::Kind::Integer || field.kind == Field::Kind::Number) return BLOBMSG_TYPE_INT32;
    return BLOBMSG_TYPE_STRING;
}

std::string spell_mac(const std::string &mac) {
    std::string digits;
    for (char c : mac)
        if (c != ':' && c != '-') digits += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return digits;
}

bool same_mac(const std::string &one, const std::string &other) {
    return spell_mac(one) == spell_mac(other);
}

} // namespace router
