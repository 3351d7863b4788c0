// SPDX-License-Identifier: Apache-2.0
#include "endpoints.h"

#include <algorithm>
#include <cctype>

namespace cloudsim {
namespace {

std::string lower(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

Request record_of(const httplib::Request &request) {
    Request record;
    record.time = std::chrono::system_clock::now();
    record.method = request.method;
    record.path = request.path;
    record.body = request.body;
    record.verdict = "unsigned";
    for (const auto &[name, value] : request.headers)
        record.headers.emplace(lower(name), value);
    for (const auto &[name, part] : request.files)
        record.fields.emplace(name, part.content);
    return record;
}

} // namespace

void attend(Services &services, const char *endpoint, const httplib::Request &request,
            httplib::Response &response, Exchange &exchange,
            const std::function<void(Services &, Visit &)> &answer) {
    exchange.fault = services.faults.take(endpoint);
    Visit visit{request, record_of(request), exchange.fault.value_or(Fault{}), 200, "", "application/json"};
    answer(services, visit);
    visit.status = visit.fault.status.value_or(visit.status);
    response.status = visit.status;
    response.set_content(visit.fault.body ? *visit.fault.body : visit.body, visit.type);
    visit.record.status = visit.status;
    if (request.method == "POST") visit.record.answer = response.body;
    visit.record.faulted = exchange.fault.has_value();
    services.journal.add(std::move(visit.record));
}

} // namespace cloudsim
