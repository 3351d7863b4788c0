// SPDX-License-Identifier: Apache-2.0
#include "control.h"

#include "journal.h"
#include <charconv>
#include <stdexcept>

namespace cloudsim {
namespace {

using Answer = std::string (*)(Cloud &, const httplib::Request &);

std::string offer(Cloud &cloud, const httplib::Request &request) {
    Firmware firmware;
    firmware.name = request.matches[1];
    firmware.image = request.body;
    firmware.version = request.get_param_value("version");
    firmware.strategy = request.get_param_value("strategy");
    firmware.wrong_md5 = request.has_param("wrong-md5");
    firmware.upper_md5 = request.has_param("upper-md5");
    firmware.wrong_size = request.has_param("wrong-size");
    if (firmware.version.empty()) throw std::invalid_argument("a firmware needs a version");
    cloud.offer(std::move(firmware));
    return "";
}

std::string withdraw(Cloud &cloud, const httplib::Request &) {
    cloud.withdraw();
    return "";
}

std::string fault(Cloud &cloud, const httplib::Request &request) {
    Fault made = parse_fault(request.matches[1], {request.params.begin(), request.params.end()});
    if (!request.body.empty()) made.body = request.body;
    cloud.fault(std::move(made));
    return "";
}

std::string clear_faults(Cloud &cloud, const httplib::Request &) {
    cloud.clear_faults();
    return "";
}

std::string requests(Cloud &cloud, const httplib::Request &request) {
    std::string last = request.get_param_value("last");
    std::vector<Request> all = cloud.requests();
    std::size_t count = all.size();
    if (!last.empty() && std::from_chars(last.data(), last.data() + last.size(), count).ec != std::errc())
        throw std::invalid_argument("\"" + last + "\" is not a number of requests");
    std::string lines;
    for (std::size_t i = count < all.size() ? all.size() - count : 0; i < all.size(); i++)
        lines += to_line(all[i]) + "\n";
    return lines;
}

std::string add_backup(Cloud &cloud, const httplib::Request &request) {
    return cloud.url(cloud.add_backup(request.matches[1], request.body)) + "\n";
}

std::string uploaded(Cloud &cloud, const httplib::Request &request) {
    std::optional<std::string> bytes = cloud.uploaded(request.matches[1]);
    if (!bytes) throw std::invalid_argument("no upload of that name");
    return *bytes;
}

std::string set_settings(Cloud &cloud, const httplib::Request &request) {
    cloud.set_settings(request.body);
    return "";
}

struct Command {
    const char *method, *pattern;
    Answer answer;
};
constexpr Command commands[] = {
    {"PUT", "/firmware/([^/]+)", offer},  {"DELETE", "/firmware", withdraw},
    {"POST", "/fault/([^/]+)", fault},    {"DELETE", "/fault", clear_faults},
    {"GET", "/requests", requests},       {"PUT", "/backup/([^/]+)", add_backup},
    {"GET", "/upload/([^/]+)", uploaded}, {"PUT", "/settings", set_settings},
};

void answer(const Command &command, Cloud &cloud, const httplib::Request &request,
            httplib::Response &response) {
    try {
        response.set_content(command.answer(cloud, request), "text/plain");
    } catch (const std::invalid_argument &error) {
        response.status = 400;
        response.set_content(std::string(error.what()) + "\n", "text/plain");
    }
}

} // namespace

void add_control(HttpServer &server, Cloud &cloud) {
    for (const Command &command : commands)
        server.route(command.method, command.pattern,
                     [&](const httplib::Request &request, httplib::Response &response, Exchange &) {
                         answer(command, cloud, request, response);
                     });
}

} // namespace cloudsim
