// SPDX-License-Identifier: Apache-2.0
// The five requests of the device-management interface. All are signed; a refusal has a "code" that is not 0
// and a "message" that says why.
#include "endpoints.h"
#include "json.h"
#include "signature.h"
#include <algorithm>
#include <array>

namespace cloudsim {
namespace {

constexpr int malformed = 40000, bad_name = 40002, not_stored = 50000;

std::string success() {
    return R"({"code":0})";
}

void refuse(Services &services, Visit &visit, const Verdict &verdict) {
    JsonRoot answer(json_object_new_object());
    put(answer.get(), "code", static_cast<std::int64_t>(verdict.code));
    put(answer.get(), "message", verdict.text);
    visit.record.verdict = verdict.text;
    visit.status = services.options.refusal_status;
    visit.body = to_text(answer);
}

std::string swapped_digit(std::string digest) {
    digest[0] = digest[0] == '0' ? '1' : '0';
    return digest;
}

std::string announced_md5(const Firmware &firmware, const Fault &fault) {
    std::string digest = firmware.md5.value_or(md5_hex(firmware.image));
    if ((firmware.wrong_md5 || fault.wrong_md5) && !digest.empty()) digest = swapped_digit(digest);
    if (firmware.upper_md5)
        std::ranges::transform(digest, digest.begin(),
                               [](unsigned char c) { return static_cast<char>(toupper(c)); });
    return digest;
}

// The address that the device itself used for the server is one that it can reach.
std::string image_url(const Services &services, const Visit &visit, const Firmware &firmware) {
    const char *scheme = services.scheme == Scheme::https ? "https://" : "http://";
    return scheme + visit.http.get_header_value("Host") + "/firmware/" + firmware.name;
}

void answer_upgrade(Services &services, Visit &visit, json_object *body) {
    visit.body = success();
    std::shared_ptr<const Firmware> firmware = services.catalog.firmware();
    if (!firmware || text_member(body, "firmwareVersion") == firmware->version) return;
    std::int64_t excess = firmware->wrong_size || visit.fault.wrong_size ? 1 : 0;
    JsonRoot answer(json_object_new_object());
    json_object *data = json_object_new_object();
    put(answer.get(), "code", std::int64_t{0});
    json_object_object_add(answer.get(), "data", data);
    put(data, "id", firmware->id);
    put(data, "size", static_cast<std::int64_t>(firmware->image.size()) + excess);
    put(data, "version", firmware->version);
    put(data, "md5", announced_md5(*firmware, visit.fault));
    put(data, "description", firmware->description);
    put(data, "strategy", firmware->strategy);
    put(data, "firmwareName", firmware->name);
    put(data, "url", firmware->url.value_or(image_url(services, visit, *firmware)));
    visit.body = to_text(answer);
}

void answer_settings(Services &services, Visit &visit, json_object *) {
    visit.body = R"({"code":0,"data":)" + services.catalog.settings() + "}";
}

void answer_success(Services &, Visit &visit, json_object *) {
    visit.body = success();
}

struct Endpoint {
    const char *name;
    const char *path;
    std::array<const char *, 6> members; // required beside the identity; of any type
    void (*answer)(Services &, Visit &, json_object *body);
};
constexpr Endpoint json_endpoints[] = {
    {"check-upgrade",
     check_upgrade_path,
     {"mac", "checkType", "manufacturer", "hardwareVersion", "firmwareVersion", "areaCode"},
     answer_upgrade},
    {"upgrade-progress",
     upgrade_progress_path,
     {"strategy", "progress", "oldVersion", "newVersion"},
     answer_success},
    {"report-runtime", report_runtime_path, {"runtimeList"}, answer_success},
    {"get-settings", get_settings_path, {}, answer_settings},
};

Verdict check_members(const Endpoint &endpoint, json_object *body) {
    for (const char *member : endpoint.members)
        if (member != nullptr && !json_object_object_get_ex(body, member, nullptr))
            return {malformed, std::string(member) + " missing"};
    return {};
}

Verdict check_identity(Services &services, Visit &visit, Verdict read, const Identity &identity) {
    visit.record.serial = identity.serial;
    if (read.code != 0) return read;
    return check_signature(identity, visit.http.get_header_value("sign"), services.catalog.devices(),
                           services.options.timestamp_window);
}

void answer_json(const Endpoint &endpoint, Services &services, Visit &visit) {
    JsonRoot body = parse_json(visit.http.body);
    Identity identity;
    Verdict verdict = read_identity(body.get(), &identity);
    verdict = check_identity(services, visit, verdict, identity);
    if (verdict.code == 0) verdict = check_members(endpoint, body.get());
    if (verdict.code == 0 && !visit.http.get_header_value("Content-Type").starts_with("application/json"))
        verdict = {malformed, "Content-Type is not application/json"};
    if (verdict.code != 0) return refuse(services, visit, verdict);
    visit.record.verified = true;
    visit.record.verdict = verdict.text;
    endpoint.answer(services, visit, body.get());
}

Verdict store_config(Services &services, Visit &visit) {
    if (!visit.http.has_file("file")) return {malformed, "file missing"};
    httplib::MultipartFormData file = visit.http.get_file_value("file");
    if (!is_plain_name(file.filename)) return {bad_name, "file name refused"};
    if (visit.fault.status.value_or(200) >= 300 || services.uploads.put(file.filename, file.content))
        return {};
    return {not_stored, "cannot be stored"};
}

void answer_config_upload(Services &services, Visit &visit) {
    Identity identity;
    Verdict verdict = read_identity(visit.record.fields, &identity);
    verdict = check_identity(services, visit, verdict, identity);
    visit.record.verified = verdict.code == 0;
    if (verdict.code == 0) verdict = store_config(services, visit);
    if (verdict.code != 0) return refuse(services, visit, verdict);
    visit.record.verdict = verdict.text;
    visit.body = success();
}

} // namespace

void add_signed_endpoints(HttpServer &server, Services &services) {
    for (const Endpoint &endpoint : json_endpoints)
        server.route("POST", endpoint.path,
                     [&](const httplib::Request &request, httplib::Response &response, Exchange &exchange) {
                         auto answer = [&endpoint](Services &own, Visit &visit) {
                             answer_json(endpoint, own, visit);
                         };
                         attend(services, endpoint.name, request, response, exchange, answer);
                     });
    server.route("POST", upload_config_path,
                 [&](const httplib::Request &request, httplib::Response &response, Exchange &exchange) {
                     attend(services, "upload-config-file", request, response, exchange,
                            answer_config_upload);
                 });
}

} // namespace cloudsim
