// SPDX-License-Identifier: Apache-2.0
// What a method takes: one row per argument. The rows check a call, describe it in the bus's signatures and
// in routersim --list.
#pragma once

#include <span>
#include <stdexcept>
#include <string>

#include <json-c/json.h>

namespace router {

// Thrown by a method that refuses its call; it has changed nothing then.
struct Refused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Field {
    enum class Kind {
        Integer,   // from min to max
        Number,    // one of `choices`
        Text,      // of min to max bytes
        Choice,    // one of `choices`
        Address,   // dotted IPv4 address
        Address6,  // IPv6 address; may be empty
        Addresses, // up to max of either, separated by commas; any may be empty
        Mac,       // twelve hexadecimal digits, with or without colons
    };
    const char *name;
    const char *choices; // separated by '|'
    Kind kind;
    int min = 0;
    int max = 0;
    bool required = false;
    bool stored = true; // false: steers the call and is no setting
};
using Fields = std::span<const Field>;

constexpr Field integer(const char *name, int min, int max) {
    return {name, "", Field::Kind::Integer, min, max};
}
constexpr Field flag(const char *name) {
    return integer(name, 0, 1);
}
constexpr Field number(const char *name, const char *choices) {
    return {name, choices, Field::Kind::Number};
}
constexpr Field text(const char *name, int min, int max) {
    return {name, "", Field::Kind::Text, min, max};
}
constexpr Field choice(const char *name, const char *choices) {
    return {name, choices, Field::Kind::Choice};
}
constexpr Field address(const char *name) {
    return {name, "", Field::Kind::Address};
}
constexpr Field address6(const char *name) {
    return {name, "", Field::Kind::Address6};
}
constexpr Field addresses(const char *name, int max) {
    return {name, "", Field::Kind::Addresses, 0, max};
}
constexpr Field mac(const char *name) {
    return {name, "", Field::Kind::Mac};
}
constexpr Field required(Field field) {
    field.required = true;
    return field;
}
constexpr Field steering(Field field) {
    field.stored = false;
    return field;
}

// Throws Refused, in the daemon's words, at the first argument that is unknown, missing or out of its bounds.
void check_arguments(Fields fields, json_object *arguments);

// "enable 0..1" or "authmode NONE|WPA-PSK", for a reader.
std::string describe(const Field &field);

// The blobmsg type that the bus lists for it.
int bus_type(const Field &field);

// A MAC address as the daemon spells it: twelve lower-case digits without separators.
std::string spell_mac(const std::string &mac);
// The same address in another spelling is the same station.
bool same_mac(const std::string &one, const std::string &other);

} // namespace router
