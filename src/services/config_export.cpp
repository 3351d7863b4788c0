// SPDX-License-Identifier: Apache-2.0
// The service that uploads the router's own export of its configuration.
#include <mutex>
#include <string>
#include <unistd.h>

#include "core/bus.h"
#include "core/command.h"
#include "core/json_path.h"
#include "core/text.h"
#include "https/helper_program.h"
#include "properties/field.h"
#include "services/backup_services.h"
#include "services/service.h"
#include "services/url_file.h"

namespace {

constexpr size_t EXPORT_URL_SIZE = 512;
constexpr char EXPORT_FILE[] = "/tmp/cfg_export_config_file.conf";
constexpr char APTMP_EXPORT_FILE[] = "/aptmp/cfg_export_config_file.conf";

std::mutex export_mutex; // the daemon writes one file for all exports

// The request's "url" as it stands, cut between characters.
std::string answer_url(json_object *request) {
    const char *given = request_text(request, "url");
    std::string url = given != nullptr ? given : "";
    size_t length = url.size() < EXPORT_URL_SIZE ? url.size() : EXPORT_URL_SIZE - 1;
    while (length < url.size() && length > 0 && (url[length] & 0xC0) == 0x80)
        length--;
    url.resize(length);
    return url;
}

// Uploads what the daemon has exported to the address.
ServiceAnswer upload_export(const ServiceRequest &request) {
    const char *address = request_text(request.json, "uploadUrl");
    if (address == nullptr) {
        LOG_AT(request.site, "url is invalid");
        return answer_failed(R"({"url content":"empty"})");
    }
    if (*address == '\0') {
        LOG_AT(request.site, "url content is empty");
        return answer_failed(R"({"url":"failed"})");
    }
    LOG_AT(request.site, "url is %s", address);
    char upload_url[EXPORT_URL_SIZE];
    copy_text(upload_url, address);
    const std::string url = answer_url(request.json);
    const UrlFile file(upload_url, request.site);
    if (!file) return answer_failed(R"({"urltxt":"failed"})");
    const char *path = file_exists_container_flag(APTMP_EXPORT_FILE) != 0 ? APTMP_EXPORT_FILE : EXPORT_FILE;
    if (run_cmd_ext(format_text<512>("%s %s", PUT_FILE_PROGRAM, path).text) != 0) {
        LOG_AT(request.site, "put file failed");
        return answer_failed(R"({"upload":"failed"})");
    }
    return answer_with("{\"url\": " + JsonQuote(url.c_str()) + "}");
}

ServiceAnswer export_refused(const ServiceRequest &request) {
    LOG_AT(request.site, "remoteCfgExport fail");
    return answer_failed();
}

} // namespace

int remoteCfgExport_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service REFUSED = {.name = "remoteCfgExport"};
    constexpr Service SERVICE = {.name = "remoteCfgExport", .parameters = Parameters::needed};
    const ServiceCall call = {handle, id, parameters};
    std::lock_guard lock(export_mutex);
    // before the request is looked at: even one that is refused leaves a fresh export
    if (set_dev_info("vrop", "configexport") != 0) return serve(REFUSED, call, export_refused);
    return serve(SERVICE, call, upload_export);
}

int file_exists_container_flag(const char *path) {
    const int flag = access(path, F_OK) == 0 ? 1 : 0;
    LOG("flag: %d", flag);
    return flag;
}
