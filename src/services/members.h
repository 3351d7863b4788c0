// SPDX-License-Identifier: Apache-2.0
// Members of a service's request, told apart: absent, good, or of another type or range than the service
// takes. Any thread, as long as it alone uses the document.
#pragma once

#include <cstdint>
#include <string>

#include <json-c/json.h>

enum class Member { absent, good, bad };

// An integer from `least` to `most`; only a JSON integer is one. *value is written when it is good. A null
// document has no members.
Member take_integer(json_object *request, const char *key, int64_t least, int64_t most, int64_t *value);

// A text of 1 to `longest` bytes without control characters.
Member take_text(json_object *request, const char *key, size_t longest, std::string *value);

// "radio": 1 (2.4 GHz), 2 (5 GHz), or absent for both. The range of radios that are meant; false when it is
// bad.
struct Radios {
    int first, last;
};
bool take_radios(json_object *request, Radios *radios);
