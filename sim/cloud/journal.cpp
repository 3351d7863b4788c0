// SPDX-License-Identifier: Apache-2.0
#include "journal.h"

#include "json.h"
#include <algorithm>
#include <ctime>

namespace cloudsim {
namespace {

// ISO 8601 with milliseconds, in UTC.
std::string time_text(std::chrono::system_clock::time_point time) {
    std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    auto since = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[64];
    std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>(since % 1000));
    return text;
}

bool is_plain_text(const std::string &body) {
    return std::ranges::all_of(
        body, [](unsigned char c) { return (c >= ' ' && c < 0x7f) || c == '\t' || c == '\n'; });
}

std::string body_text(const Request &request) {
    bool readable = request.fields.empty() && request.method != "PUT" &&
                    (is_plain_text(request.body) || parse_json(request.body) != nullptr);
    return readable ? request.body : "<" + std::to_string(request.body.size()) + " bytes>";
}

} // namespace

std::string to_line(const Request &request) {
    JsonRoot line(json_object_new_object());
    put(line.get(), "time", time_text(request.time));
    put(line.get(), "method", request.method);
    put(line.get(), "path", request.path);
    put(line.get(), "sn", request.serial);
    put(line.get(), "verdict", request.verdict);
    put(line.get(), "status", static_cast<std::int64_t>(request.status));
    json_object_object_add(line.get(), "fault", json_object_new_boolean(request.faulted));
    put(line.get(), "body", body_text(request));
    if (is_plain_text(request.answer)) put(line.get(), "answer", request.answer);
    return to_text(line);
}

Journal::Journal(std::function<void(const std::string &)> log) : log_(std::move(log)) {}

void Journal::add(Request request) {
    std::lock_guard lock(mutex_);
    if (log_) log_(to_line(request));
    requests_.push_back(std::move(request));
}

std::vector<Request> Journal::all() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

void Journal::clear() {
    std::lock_guard lock(mutex_);
    requests_.clear();
}

} // namespace cloudsim
