// SPDX-License-Identifier: Apache-2.0
#include "services/backup_services.h"

#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string>
#include <unistd.h>

#include "core/bus.h"
#include "core/clock.h"
#include "core/command.h"
#include "core/files.h"
#include "core/json_path.h"
#include "core/text.h"
#include "core/thread.h"
#include "https/helper_program.h"
#include "properties/field.h"
#include "relay/event_client.h"
#include "services/backup_read.h"
#include "services/restore.h"
#include "services/service.h"
#include "services/url_file.h"

namespace {

constexpr unsigned STEP_SECONDS = 2;
constexpr unsigned LAST_STEP_SECONDS = 1;
constexpr size_t BACKUP_URL_SIZE = 256;

std::mutex backup_file_mutex; // two backups in one minute have one name

// What may stand in a file's name anywhere and, "-" and the like apart, is no sign to a shell or a pattern.
void make_file_name(char *model) {
    constexpr char PLAIN[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+-.";
    if (*model == '.') *model = '-';
    for (char *at = model + strspn(model, PLAIN); *at != '\0'; at += strspn(at, PLAIN))
        *at = '-';
}

bool create_file(const char *path, const char *text) {
    const Descriptor file = create_private_file(path);
    return file && write_all(file.get(), text, strlen(text));
}

ServiceAnswer back_up(const ServiceRequest &request) {
    char document[BACKUP_DOCUMENT_SIZE] = "";
    if (tunningBackupCfg_get(document, sizeof document) != 0) return answer_failed();
    char name[128] = "";
    std::lock_guard lock(backup_file_mutex);
    if (set_fileName(name, sizeof name) != 0) LOG_AT(request.site, "set file name fail");
    if (!create_file(name, document)) {
        LOG_AT(request.site, "creat  file fail");
        unlink(name); // a full disk takes the beginning
        return answer_failed();
    }
    int status = 0;
    run_cmd(&status, "post_file >/dev/null 2>&1"); // whether the cloud has it, the cloud knows
    unlink(name);
    return answer_done();
}

// Fetches the document into BACKUP_FILE. True when the helper says that it has.
bool fetch_document(LogSite site) {
    int status = -1; // also of a helper that was killed
    run_post_data(PostDataMode::configuration, &status);
    LOG_AT(site, "ret:%d", status);
    if (status != 0) LOG_AT(site, "download fail");
    return status == 0;
}

// BACKUP_FILE belongs to one restore from its download to its end; who comes meanwhile downloads after that.
std::mutex turn_mutex;
std::condition_variable turn_over;
bool turn_taken;

void take_turn() {
    std::unique_lock lock(turn_mutex);
    turn_over.wait(lock, [] { return !turn_taken; });
    turn_taken = true;
}

void end_turn() {
    std::lock_guard lock(turn_mutex);
    turn_taken = false;
    turn_over.notify_one();
}

// Downloads the document and starts its restore, which ends the turn when this answers with success.
ServiceAnswer start_restore(const ServiceRequest &request) {
    char address[BACKUP_URL_SIZE];
    copy_text(address, request_text(request.json, "backupUrl"));
    {
        const UrlFile file(address, request.site);
        if (!file) return answer_failed(R"({"urltxt":"failed"})");
        if (!fetch_document(request.site)) return answer_failed();
    }
    cfgReport_progress(80);
    pause_seconds(STEP_SECONDS);
    if (cfgReport_threadStart() == 0) return answer_done();
    LOG_AT(request.site, "config fail");
    return answer_failed();
}

ServiceAnswer fetch_and_restore(const ServiceRequest &request) {
    cfgReport_progress(40);
    pause_seconds(STEP_SECONDS);
    take_turn();
    ServiceAnswer answer = start_restore(request);
    if (answer.code != SERVICE_OK) {
        end_turn();
        return answer;
    }
    cfgReport_progress(100);
    pause_seconds(LAST_STEP_SECONDS);
    return answer;
}

} // namespace

int tuningBackupCfg_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "tuningBackupCfg", .entry = "tuningBackupCfg_call ...\n"};
    return serve(SERVICE, {handle, id, parameters}, back_up);
}

int cfgReport_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {
        .name = "cfgReport", .entry = "cfgReport_call ...\n", .parameters = Parameters::needed};
    return serve(SERVICE, {handle, id, parameters}, fetch_and_restore);
}

int set_fileName(char *name, int size) {
    if (name == nullptr || size < 1) {
        LOG("param is NULL");
        return -1;
    }
    JsonRoot root;
    json_object *info = get_dev_info("vrop.devinfo", "get", &root);
    if (info == nullptr) return -1;
    char model[64];
    copy_text(model, _json_get_str(info, "model"));
    make_file_name(model);
    char mac[19] = "";
    set_colon_mac(_json_get_str(info, "mac"), mac, sizeof mac);
    const struct tm now = local_time();
    const Text<32> time = format_text<32>("%04d%02d%02d%02d%02d%s", now.tm_year + 1900, now.tm_mon + 1,
                                          now.tm_mday, now.tm_hour, now.tm_min, "");
    snprintf(name, static_cast<size_t>(size), "/tmp/%s_%s_%s.config%s", model, mac, time.text, "");
    return 0;
}

void cfgReport_progress(int percent) {
    send_event<128>("{\"action\": \"cfgReportProgress\", \"progress\": %d}", percent);
}

int cfgReport_threadStart() {
    return start_detached(cfgReport_proc, nullptr) == 0 ? 0 : -1;
}

void *cfgReport_proc(void *) {
    tunningBackupCfg_set();
    LOG("pthread_exit\n");
    end_turn();
    return nullptr;
}
