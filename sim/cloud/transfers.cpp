// SPDX-License-Identifier: Apache-2.0
// Files down and up, without signatures: who knows the address may.
#include "endpoints.h"

namespace cloudsim {
namespace {

std::string name_of(const Visit &visit) {
    return visit.http.matches[1];
}

void send_file(Visit &visit, const std::string *bytes) {
    if (bytes == nullptr) {
        visit.status = 404;
        return;
    }
    visit.type = "application/octet-stream";
    visit.body = *bytes;
    if (visit.fault.wrong_md5 && !visit.body.empty())
        visit.body.back() = static_cast<char>(visit.body.back() ^ 1);
    if (visit.fault.wrong_size) visit.body += '\0';
}

void send_firmware(Services &services, Visit &visit) {
    std::shared_ptr<const Firmware> firmware = services.catalog.firmware();
    send_file(visit, firmware && firmware->name == name_of(visit) ? &firmware->image : nullptr);
}

// What was given to the server to hand out, else what a device has uploaded.
void send_backup(Services &services, Visit &visit) {
    std::optional<std::string> bytes = services.backups.get(name_of(visit));
    if (!bytes) bytes = services.uploads.get(name_of(visit));
    send_file(visit, bytes ? &*bytes : nullptr);
}

void take_upload(Services &services, Visit &visit) {
    std::string name = name_of(visit);
    if (visit.fault.status.value_or(200) >= 300) return;
    if (!is_plain_name(name)) {
        visit.status = 400;
        visit.record.verdict = "file name refused";
    } else if (!services.uploads.put(name, visit.http.body)) {
        visit.status = 500;
        visit.record.verdict = "cannot be stored";
    }
}

void record_unrouted(Services &services, const httplib::Request &request, const httplib::Response &response) {
    Request record;
    record.time = std::chrono::system_clock::now();
    record.method = request.method;
    record.path = request.path;
    record.verdict = response.status == 413 ? "too large" : "not served";
    record.status = response.status;
    services.journal.add(std::move(record));
}

struct Transfer {
    const char *method, *pattern, *endpoint;
    void (*answer)(Services &, Visit &);
};
constexpr Transfer transfers[] = {
    {"GET", "/firmware/([^/]+)", "firmware", send_firmware},
    {"GET", "/backup/([^/]+)", "backup", send_backup},
    {"PUT", "/upload/([^/]+)", "upload", take_upload},
};

} // namespace

void add_transfers(HttpServer &server, Services &services) {
    for (const Transfer &transfer : transfers)
        server.route(transfer.method, transfer.pattern,
                     [&](const httplib::Request &request, httplib::Response &response, Exchange &exchange) {
                         attend(services, transfer.endpoint, request, response, exchange, transfer.answer);
                     });
    server.on_unrouted([&](const httplib::Request &request, const httplib::Response &response) {
        record_unrouted(services, request, response);
    });
}

} // namespace cloudsim
