// SPDX-License-Identifier: Apache-2.0
#include "fault.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace cloudsim {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view endpoints[] = {
    "check-upgrade", "upgrade-progress", "report-runtime", "get-settings", "upload-config-file",
    "firmware",      "backup",           "upload",         "any"};

int number(const std::string &text) {
    int value = -1;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 0)
        throw std::invalid_argument("\"" + text + "\" is not a number from 0 to 2147483647");
    return value;
}

bool yes(const std::string &text) {
    if (text != "" && text != "0" && text != "1")
        throw std::invalid_argument("\"" + text + "\" is neither 0 nor 1");
    return text != "0";
}

std::size_t size(const std::string &text) {
    return static_cast<std::size_t>(number(text));
}

int http_status(const std::string &text) {
    int status = number(text);
    if (status < 200 || status > 599)
        throw std::invalid_argument("\"" + text + "\" is not a status from 200 to 599");
    return status;
}

struct Key {
    std::string_view name;
    void (*set)(Fault &, const std::string &);
};
constexpr Key keys[] = {
    {"count", [](Fault &fault, const std::string &text) { fault.count = number(text); }},
    {"status", [](Fault &fault, const std::string &text) { fault.status = http_status(text); }},
    {"body", [](Fault &fault, const std::string &text) { fault.body = text; }},
    {"delay", [](Fault &fault, const std::string &text) { fault.delay = milliseconds(number(text)); }},
    {"pieces", [](Fault &fault, const std::string &text) { fault.pieces = size(text); }},
    {"pause", [](Fault &fault, const std::string &text) { fault.pause = milliseconds(number(text)); }},
    {"cut", [](Fault &fault, const std::string &text) { fault.cut = size(text); }},
    {"refuse", [](Fault &fault, const std::string &text) { fault.refuse = milliseconds(number(text)); }},
    {"silent", [](Fault &fault, const std::string &text) { fault.silent = yes(text); }},
    {"drop", [](Fault &fault, const std::string &text) { fault.drop = yes(text); }},
    {"reset", [](Fault &fault, const std::string &text) { fault.reset = yes(text); }},
    {"wrong-md5", [](Fault &fault, const std::string &text) { fault.wrong_md5 = yes(text); }},
    {"wrong-size", [](Fault &fault, const std::string &text) { fault.wrong_size = yes(text); }},
};

template <class Table, class Name>
std::string choices(const Table &table, Name name) {
    std::string all;
    for (const auto &row : table)
        all += (all.empty() ? "" : ", ") + std::string(name(row));
    return all;
}

} // namespace

Fault parse_fault(const std::string &endpoint,
                  const std::vector<std::pair<std::string, std::string>> &values) {
    if (std::ranges::find(endpoints, endpoint) == std::end(endpoints))
        throw std::invalid_argument("unknown endpoint \"" + endpoint + "\"; there are " +
                                    choices(endpoints, [](std::string_view name) { return name; }));
    Fault fault;
    fault.endpoint = endpoint;
    for (const auto &[name, text] : values) {
        const Key *key = std::ranges::find(keys, name, &Key::name);
        if (key == std::end(keys))
            throw std::invalid_argument("unknown key \"" + name + "\"; there are " +
                                        choices(keys, [](const Key &row) { return row.name; }));
        key->set(fault, text);
    }
    return fault;
}

void FaultQueue::add(Fault fault) {
    std::lock_guard lock(mutex_);
    faults_.push_back(std::move(fault));
}

void FaultQueue::clear() {
    std::lock_guard lock(mutex_);
    faults_.clear();
}

std::optional<Fault> FaultQueue::take(std::string_view endpoint) {
    std::lock_guard lock(mutex_);
    auto found = std::ranges::find(faults_, endpoint, &Fault::endpoint);
    if (found == faults_.end()) found = std::ranges::find(faults_, "any", &Fault::endpoint);
    if (found == faults_.end()) return std::nullopt;
    Fault fault = *found;
    if (found->count != 0 && --found->count == 0) faults_.erase(found);
    return fault;
}

} // namespace cloudsim
