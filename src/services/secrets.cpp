// SPDX-License-Identifier: Apache-2.0
#include "services/secrets.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <utility>

#include "core/bus.h"
#include "core/json_path.h"
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
    constexpr const char *PARTS[] = {"pwd", "passw", "passphrase", "secret", "key", "psk", "token"};
    return std::any_of(std::begin(PARTS), std::end(PARTS),
                       [&](const char *part) { return name.find(part) != std::string::npos; });
}

size_t skip(const std::string &text, size_t at, const char *characters) {
    return std::min(text.find_first_not_of(characters, at), text.size());
}

// Where a value that begins behind its opening quotation mark ends: with the text, which may be cut, or at
// the mark that has as many backslashes before it as the opening one. In JSON within JSON, n of them, a mark
// of the value itself has 2n+1, and each backslash of the value 2(n+1) more.
size_t quoted_end(const std::string &text, size_t from, size_t backslashes) {
    for (size_t at = from; at < text.size(); at++) {
        const size_t first = at;
        while (at < text.size() && text[at] == '\\')
            at++;
        if (at < text.size() && text[at] == '"' && (at - first) % (2 * (backslashes + 1)) == backslashes)
            return at - backslashes;
    }
    return text.size();
}

// A piece of the text, from the first byte to the one behind the last.
struct Piece {
    size_t from, to;
};

// Where a value that stands in no quotation marks ends. A member's is a number or a word; an assignment's may
// hold anything, and so may a list or an object.
size_t bare_end(const std::string &text, size_t from, bool is_member) {
    const bool is_word = is_member && from < text.size() && text[from] != '[' && text[from] != '{';
    return std::min(text.find_first_of(is_word ? " \t\r\n,;}]" : "\r\n", from), text.size());
}

// The value behind a name that ends there; empty when none follows.
Piece value_behind(const std::string &text, size_t name_end) {
    const size_t sign = skip(text, skip(text, name_end, "\\\""), " \t");
    if (sign >= text.size() || (text[sign] != ':' && text[sign] != '=')) return {0, 0};
    const size_t at = skip(text, sign + 1, " \t");
    const size_t marks = skip(text, at, "\\");
    if (marks < text.size() && text[marks] == '"')
        return {marks + 1, quoted_end(text, marks + 1, marks - at)};
    const bool is_member = text[name_end] == '"' || text[name_end] == '\\';
    return {at, bare_end(text, at, is_member)};
}

void find_by_name(const std::string &text, std::vector<Piece> *pieces) {
    for (size_t at = 0; at < text.size(); at++) {
        const size_t from = at;
        while (at < text.size() && is_name_character(text[at]))
            at++;
        if (at == from || !is_secret_name(text.substr(from, at - from))) continue;
        const Piece value = value_behind(text, at);
        if (value.to > value.from) pieces->push_back(value);
    }
}

void find_value(const std::string &text, const std::string &value, std::vector<Piece> *pieces) {
    for (size_t at = text.find(value); at != std::string::npos; at = text.find(value, at + 1))
        pieces->push_back({at, at + value.size()});
}

// A value may be cut with the line: what the line's end begins of it, from SHORTEST_VALUE bytes on.
void find_cut_value(const std::string &text, const std::string &value, std::vector<Piece> *pieces) {
    const size_t end = std::min(text.find_last_not_of("\r\n") + 1, text.size());
    for (size_t length = std::min(value.size(), end); length >= SHORTEST_VALUE; length--)
        if (text.compare(end - length, length, value, 0, length) == 0) {
            pieces->push_back({end - length, end});
            return;
        }
}

// The value, and what it is in JSON, in JSON within JSON, and in both once more, with and without the slashes
// escaped; each differs from the one before only when there is something to escape.
std::vector<std::string> forms_of(const std::string &value) {
    constexpr int DEEPEST = 3;
    std::vector<std::string> forms = {value};
    for (const int flags : {JSON_C_TO_STRING_PLAIN, JSON_C_TO_STRING_NOSLASHESCAPE}) {
        std::string form = value;
        for (int depth = 0; depth < DEEPEST; depth++) {
            const JsonRoot text(json_object_new_string(form.c_str()));
            const std::string quoted = json_object_to_json_string_ext(text.get(), flags);
            form = quoted.substr(1, quoted.size() - 2);
            if (std::find(forms.begin(), forms.end(), form) == forms.end()) forms.push_back(form);
        }
    }
    return forms;
}

// The text with a mask for each run of pieces that overlap or touch.
std::string with_masks(const std::string &text, std::vector<Piece> pieces) {
    std::sort(pieces.begin(), pieces.end(),
              [](const Piece &one, const Piece &other) { return one.from < other.from; });
    std::string result;
    size_t at = 0;
    for (size_t i = 0; i < pieces.size();) {
        size_t to = pieces[i].to;
        result += text.substr(at, pieces[i].from - at) + MASK;
        while (++i < pieces.size() && pieces[i].from <= to)
            to = std::max(to, pieces[i].to);
        at = to;
    }
    return result + text.substr(at);
}

void add_value(const char *value, std::vector<std::string> *values) {
    if (strlen(value) < SHORTEST_VALUE) return;
    for (const std::string &form : forms_of(value))
        if (std::find(values->begin(), values->end(), form) == values->end()) values->push_back(form);
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
    std::vector<Piece> pieces;
    find_by_name(text, &pieces);
    for (const std::string &value : values) {
        find_value(text, value, &pieces);
        find_cut_value(text, value, &pieces);
    }
    return with_masks(text, std::move(pieces));
}

std::vector<std::string> present_secrets() {
    std::vector<std::string> values;
    char enrolled[sizeof register_config.device_secret] = {};
    get_deviceSecret(enrolled, sizeof enrolled);
    for (const char *secret : {register_config.device_secret, register_config.product_secret, enrolled})
        add_value(secret, &values);
    for (const Source &source : SOURCES) {
        JsonRoot root;
        add_members(get_dev_info(source.object, source.method, &root), &values);
    }
    return values;
}
