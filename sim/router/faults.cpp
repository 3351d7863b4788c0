// SPDX-License-Identifier: Apache-2.0
#include "sim/router/faults.h"

#include <algorithm>
#include <fnmatch.h>

#include "core/json_parse.h"
#include "sim/router/json.h"

namespace router {
namespace {

struct KindName {
    const char *name;
    Fault::Kind kind;
};

constexpr KindName KINDS[] = {
    {"no_reply", Fault::Kind::NoReply}, {"delay", Fault::Kind::Delay},   {"result", Fault::Kind::Result},
    {"absent", Fault::Kind::Absent},    {"status", Fault::Kind::Status}, {"reply", Fault::Kind::Reply},
};

Fault::Kind kind_of(const std::string &name) {
    for (const KindName &row : KINDS)
        if (name == row.name) return row.kind;
    throw std::runtime_error("unknown fault '" + name +
                             "': no_reply, delay, result, absent, status or reply");
}

// Takes the next word off the text; "" at its end.
std::string next_word(std::string &text) {
    text.erase(0, text.find_first_not_of(' '));
    std::string word = text.substr(0, text.find(' '));
    text.erase(0, word.size());
    return word;
}

int number_of(const std::string &text) {
    std::size_t used = 0;
    int value = 0;
    try {
        value = std::stoi(text, &used);
    } catch (const std::logic_error &) {
        used = 0;
    }
    if (used == 0 || used != text.size()) throw std::runtime_error("not a number: '" + text + "'");
    return value;
}

// A reply is JSON and may hold blanks: it ends where its object ends.
std::string take_object(std::string &text) {
    const JsonTokener tokener(json_tokener_new());
    JsonRoot root(json_tokener_parse_ex(tokener.get(), text.c_str(), static_cast<int>(text.size())));
    const std::size_t end = json_tokener_get_parse_end(tokener.get());
    if (!json_object_is_type(root.get(), json_type_object))
        throw std::runtime_error("not a JSON object: " + text);
    text.erase(0, end);
    return json_text(root.get());
}

} // namespace

bool glob(const std::string &pattern, const std::string &text) {
    return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

void Faults::add(const Fault &fault) {
    if (fault.kind == Fault::Kind::Reply &&
        !json_object_is_type(parse_json(fault.reply).get(), json_type_object))
        throw std::runtime_error("a reply is a JSON object");
    if (fault.kind == Fault::Kind::Delay && fault.value < 0)
        throw std::runtime_error("a delay is not negative");
    faults.push_back(fault);
}

bool Faults::absent(const std::string &object) const {
    return std::any_of(faults.begin(), faults.end(), [&](const Fault &fault) {
        return fault.kind == Fault::Kind::Absent && glob(fault.object, object);
    });
}

Mishap Faults::strike(const std::string &object, const std::string &method) {
    Mishap mishap;
    for (Fault &fault : faults) {
        if (fault.kind == Fault::Kind::Absent || fault.count == 0 || !glob(fault.object, object) ||
            !glob(fault.method, method))
            continue;
        const bool delays = fault.kind == Fault::Kind::Delay;
        if (delays ? mishap.delay_millis > 0 : mishap.fault.has_value()) continue;
        if (fault.count > 0) fault.count--;
        if (delays)
            mishap.delay_millis = fault.value;
        else
            mishap.fault = fault;
    }
    return mishap;
}

Fault parse_fault(const std::string &description) {
    std::string rest = description;
    Fault fault;
    std::size_t end = rest.find_first_of("= ");
    fault.kind = kind_of(rest.substr(0, end));
    rest.erase(0, end == std::string::npos ? rest.size() : end);
    if (rest.starts_with("=")) {
        rest.erase(0, 1);
        if (fault.kind == Fault::Kind::Reply)
            fault.reply = take_object(rest);
        else
            fault.value = number_of(next_word(rest));
    }
    if (std::string word = next_word(rest); !word.empty()) fault.object = word;
    if (std::string word = next_word(rest); !word.empty()) fault.method = word;
    if (std::string word = next_word(rest); !word.empty()) fault.count = number_of(word);
    return fault;
}

} // namespace router
