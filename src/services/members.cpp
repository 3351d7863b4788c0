// SPDX-License-Identifier: Apache-2.0
#include "services/members.h"

#include <algorithm>

#include "core/json_path.h"
#include "properties/radio.h"

namespace {

bool is_control(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < ' ' || byte == 0x7f;
}

} // namespace

Member take_integer(json_object *request, const char *key, int64_t least, int64_t most, int64_t *value) {
    json_object *member = nullptr;
    if (JsonGetObj(request, key, &member) == 0) return Member::absent;
    if (!json_object_is_type(member, json_type_int)) return Member::bad;
    const int64_t number = json_object_get_int64(member);
    if (number < least || number > most) return Member::bad;
    *value = number;
    return Member::good;
}

Member take_text(json_object *request, const char *key, size_t longest, std::string *value) {
    json_object *member = nullptr;
    if (JsonGetObj(request, key, &member) == 0) return Member::absent;
    if (!json_object_is_type(member, json_type_string)) return Member::bad;
    const std::string text(json_object_get_string(member),
                           static_cast<size_t>(json_object_get_string_len(member)));
    if (text.empty() || text.size() > longest || std::any_of(text.begin(), text.end(), is_control))
        return Member::bad;
    *value = text;
    return Member::good;
}

bool take_radios(json_object *request, Radios *radios) {
    int64_t radio = 0;
    const Member given = take_integer(request, "radio", CLOUD_RADIO_2G, CLOUD_RADIO_5G, &radio);
    const auto one = static_cast<int>(radio);
    *radios = given == Member::good ? Radios{one, one} : Radios{CLOUD_RADIO_2G, CLOUD_RADIO_5G};
    return given != Member::bad;
}
