// SPDX-License-Identifier: Apache-2.0
#include "upgrade/upgrade_report.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "core/clock.h"
#include "core/handles.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "core/thread.h"
#include "https/helper_program.h"
#include "https/helper_requests.h"

namespace {

constexpr size_t LINE = 256;
constexpr int NO_THREAD = 100001;
constexpr int NOT_REPORTED = 100001;
constexpr unsigned PAUSES_AFTER_FAILURE[] = {1, 5, 5, 5, 5, 60, 120, 180, 240, 300}; // seconds

// The JSON part of the first line that tells of a new version, within `line`; null when there is none.
const char *find_record(FILE *log, char (&line)[LINE]) {
    while (fgets(line, sizeof line, log))
        if (strstr(line, "newversion")) return strchr(line, '{') ? strchr(line, '{') : "";
    return nullptr;
}

// Copies a text member that must be there and not empty.
int take_member(json_object *record, const char *key, char *to, int size, LogSite site) {
    const char *value = JsonGetStr(record, key);
    if (!value) {
        LOG_AT(site, "not find %s", key);
        return HEAD_NO_MEMBER;
    }
    if (value[0] == '\0') {
        LOG_AT(site, "%s is empty", key);
        return HEAD_EMPTY_MEMBER;
    }
    copy_text(to, static_cast<size_t>(size), value);
    return HEAD_OK;
}

std::atomic_flag reporting; // set while the thread runs

void *upgrade_result_proc(void *) {
    upgrade_report_progress();
    reporting.clear();
    LOG("pthread_exit\n");
    return nullptr;
}

int add_upgrade_outcome(json_object *body, const RequestSender &sender) {
    constexpr int64_t DONE = 120, FAILED = -1;
    char recorded[128] = {};
    char strategy[32] = {};
    int result = get_upgrade_info(sender.registration.upgrade_log_path, recorded, strategy, sizeof recorded,
                                  sizeof strategy);
    if (result != HEAD_OK) return result;
    JsonSetStr(body, nullptr, "strategy", strategy);
    JsonSetInt64(body, nullptr, "progress", strcmp(sender.version, recorded) == 0 ? DONE : FAILED);
    JsonSetStr(body, nullptr, "oldVersion", sender.version);
    JsonSetStr(body, nullptr, "newVersion", recorded);
    return HEAD_OK;
}

} // namespace

int get_upgrade_info(const char *path, char *version, char *strategy, int version_size, int strategy_size) {
    if (!path || !version || !strategy || version_size <= 0 || strategy_size <= 0) {
        LOG("param is NULL");
        return HEAD_BAD_ARGUMENT;
    }
    FileHandle log(fopen(path, "re"));
    if (!log) {
        LOG("open file:%s fail", path);
        return HEAD_NO_LOG;
    }
    char line[LINE];
    const char *text = find_record(log.get(), line);
    if (!text) return HEAD_SIGN_FAILED;
    JsonRoot record(json_tokener_parse(text));
    if (!record) {
        LOG("JsonStr Token fail");
        return HEAD_JSON_FAILED;
    }
    const LogSite site = LogSite::here();
    int result = take_member(record.get(), "newversion", version, version_size, site);
    return result != HEAD_OK ? result : take_member(record.get(), "strategy", strategy, strategy_size, site);
}

int post_upgradeprogress_head(char *body, char *sign, char *url, int body_size, int sign_size, int url_size) {
    return build_request({body, sign, url, body_size, sign_size, url_size},
                         {"vrop.ftinfo", &register_config_record::upgrade_progress_url, add_upgrade_outcome},
                         LogSite::here());
}

int upgrade_result_thread(const char *path) {
    if (!path || access(path, F_OK) != 0) return 0;
    char version[128];
    char strategy[32];
    int result = get_upgrade_info(path, version, strategy, sizeof version, sizeof strategy);
    if (result != HEAD_OK) {
        LOG("no need report upgrade progress");
        return result;
    }
    if (reporting.test_and_set()) {
        LOG("the report is under way");
        return 0;
    }
    if (start_detached(upgrade_result_proc, nullptr) != 0) {
        reporting.clear();
        LOG("create pthread fail");
        return NO_THREAD;
    }
    return 0;
}

void upgrade_report_progress() {
    int status = NOT_REPORTED;
    for (unsigned pause : PAUSES_AFTER_FAILURE) {
        run_post_data(PostDataMode::upgrade_progress, &status);
        LOG("ret:%d", status);
        if (status == 0) {
            LOG("upgrade report ok");
            return;
        }
        pause_seconds(pause);
    }
    LOG("upgrade report fail ret :%d", status);
}
