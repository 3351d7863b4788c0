// SPDX-License-Identifier: Apache-2.0
#include "upgrade/https_upgrade.h"

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

#include "core/clock.h"
#include "core/log.h"
#include "core/text.h"
#include "core/thread.h"
#include "https/requests.h"
#include "upgrade/firmware.h"
#include "upgrade/retries.h"
#include "upgrade/upgrade_turn.h"

std::atomic<int64_t> g_request_interval;

namespace {

constexpr int64_t DEFAULT_INTERVAL = 1800;          // seconds
constexpr unsigned RETRY_PAUSES[] = {60, 120, 180}; // seconds, before each retry
constexpr int NOT_STARTED = 1;

enum Progress {
    PROGRESS_DOWNLOADED = 50,
    PROGRESS_MISMATCH = -2,
    PROGRESS_NOT_DOWNLOADED = -3,
    PROGRESS_REFUSED = -5,
};

using Reason = Text<256>;

void say_in_both_logs(const char *line, LogSite site) {
    LOG_AT(site, "%s", line);
    LOG_UPGRADE("%s", line);
}

const upgrade_request_context::response_fields &offer() {
    return upgrade_request.response;
}

int download() {
    return offer().url[0] == '\0' ? NOT_STARTED : curl_download_file(offer().url);
}

void give_up(Progress progress, const Reason &reason) {
    report_upgrade_progress(progress, reason.text);
    unlink(IMAGE_FILE);
}

bool has_announced_size() {
    struct stat image = {};
    const long local = lstat(IMAGE_FILE, &image) == 0 ? image.st_size : -1;
    if (local == offer().size) return true;
    LOG("size error, local size:%ld, size:%ld\n", local, static_cast<long>(offer().size));
    give_up(PROGRESS_MISMATCH,
            format_text<256>("size error, local size:%ld, size:%ld", local, static_cast<long>(offer().size)));
    return false;
}

bool has_announced_digest() {
    const Text<33> digest = get_file_md5(IMAGE_FILE);
    LOG("#http upgrade# local file md5:%s, recv md5:%s\n", digest.text, offer().md5);
    if (same_digest(digest.text, offer().md5)) return true;
    give_up(PROGRESS_MISMATCH,
            format_text<256>("MD5 error, local file MD5:%s, recv MD5:%s", digest.text, offer().md5));
    return false;
}

void *http_upgrade_proc(void *) {
    time_t last_check = http_upgrade_start();
    for (;;) {
        http_upgrade_round(&last_check);
        pause_seconds(1);
    }
}

} // namespace

Text<33> get_file_md5(const char *path) {
    return md5_of_file(path);
}

int curl_download_file(const char *address) {
    int result = fetch_image(address, IMAGE_FILE, offer().size, ProgressMeter::shown);
    if (result == FETCH_NO_FILE) {
        perror("fopen");
        LOG("#http upgrade# fopen error,path:%s\n", IMAGE_FILE);
    }
    return result < 0 ? NOT_STARTED : result;
}

void http_upgrading() {
    UpgradeTurn turn;
    if (!turn) {
        LOG("#http upgrade# refused: the upgrade before it was accepted");
        return;
    }
    delete_upgrade_log();
    unlink(IMAGE_FILE);
    int result = with_retries({"curl_download_file", RETRY_PAUSES, say_in_both_logs}, download);
    if (result != 0) {
        give_up(PROGRESS_NOT_DOWNLOADED, format_text<256>("download fail, ret:%d", result));
        return;
    }
    report_upgrade_progress(PROGRESS_DOWNLOADED, "");
    if (!has_announced_size() || !has_announced_digest()) return;

    log_new_version(offer().version, offer().strategy);
    result = start_upgrade(IMAGE_INSTALL_FILE);
    if (result == 0)
        turn.accepted(offer().version, offer().md5);
    else
        give_up(PROGRESS_REFUSED, format_text<256>("upgrade fail! ret = %d", result));
}

void set_http_upgrade_check_interval(long seconds) {
    g_request_interval = seconds;
    LOG("#http upgrade# g_request_interval:%ld\n", seconds);
}

time_t http_upgrade_start() {
    g_request_interval = DEFAULT_INTERVAL;
    load_upgrade_request();
    return monotonic_seconds() - g_request_interval; // the first check is due at once
}

void http_upgrade_round(time_t *last_check) {
    const time_t now = monotonic_seconds();
    if (now - *last_check < g_request_interval) return;
    int result = query_upgrade();
    *last_check = now;
    if (result != 0 || offer().version[0] == '\0' || offer().url[0] == '\0') return;
    if (accepted_lately(offer().version, offer().md5))
        LOG("#http upgrade# version[%s] was accepted a moment ago", offer().version);
    else
        http_upgrading();
}

int http_upgrade_thread_start() {
    return start_detached(http_upgrade_proc, nullptr) == 0 ? 0 : -1;
}
