// SPDX-License-Identifier: Apache-2.0
#include "services/config_export.h"

#include <mutex>
#include <string>
#include <unistd.h>

#include "core/bus.h"
#include "services/service.h"
#include "services/upload.h"

namespace {

constexpr char EXPORT_FILE[] = "/tmp/cfg_export_config_file.conf";
constexpr char APTMP_EXPORT_FILE[] = "/aptmp/cfg_export_config_file.conf";

std::mutex export_mutex; // the daemon writes one file for all exports

const char *export_file() {
    return file_exists_container_flag(APTMP_EXPORT_FILE) != 0 ? APTMP_EXPORT_FILE : EXPORT_FILE;
}

// Uploads what the daemon has exported to the address.
ServiceAnswer upload_export(const ServiceRequest &request) {
    std::string url;
    ServiceAnswer refusal = no_answer();
    return take_upload_url(request, &url, &refusal) ? upload_file(request, url, export_file) : refusal;
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
