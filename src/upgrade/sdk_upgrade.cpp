// SPDX-License-Identifier: Apache-2.0
#include "upgrade/sdk_upgrade.h"

#include <unistd.h>

#include "core/clock.h"
#include "core/log.h"
#include "core/text.h"
#include "relay/event_client.h"
#include "upgrade/firmware.h"
#include "upgrade/upgrade_turn.h"

namespace {

constexpr char DOWNLOAD_FILE[] = "/aptmp/qvtk_upgrade.bin";
constexpr char INSTALL_FILE[] = "/tmp/qvtk_upgrade.bin";    // the same file, as the flasher names it
constexpr unsigned PAUSES_AFTER_FAILURE[] = {60, 120, 180}; // seconds
constexpr int NOT_STARTED = 1;

enum Progress {
    PROGRESS_STARTED = 10,
    PROGRESS_DOWNLOADED = 60,
    PROGRESS_CHECKED = 80,
    PROGRESS_ACCEPTED = 100,
    PROGRESS_REFUSED = -1,
    PROGRESS_NOT_DOWNLOADED = -3,
    PROGRESS_WRONG_DIGEST = -4,
};

constexpr size_t DATAGRAM = 128; // bytes

int download(const char *url) {
    if (!url || url[0] == '\0') return NOT_STARTED;
    const int result = fetch_image(url, DOWNLOAD_FILE, 0, ProgressMeter::hidden);
    return result == FETCH_NO_FILE ? NOT_STARTED : result;
}

// 0 when the file is worth a look, also when there is no library to load it with.
int download_with_retries(const char *url) {
    int result = 0;
    for (unsigned pause : PAUSES_AFTER_FAILURE) {
        result = download(url);
        if (result == 0 || result == FETCH_NO_LIBRARY) return 0;
        pause_seconds(pause);
    }
    return result;
}

void report_failure(const char *mac, int progress, const char *message) {
    upgrade_progress(progress);
    upgrade_result(mac, message, 1);
}

int hand_over(const char *mac) {
    int result = start_upgrade(INSTALL_FILE);
    if (result != 0) {
        LOG("upgrade fail");
        report_failure(mac, PROGRESS_REFUSED, "upgrade fail");
        unlink(DOWNLOAD_FILE);
        qvtk_set_download_upgrade_result(0);
        return result;
    }
    upgrade_progress(PROGRESS_ACCEPTED);
    LOG("upgrade ok");
    upgrade_result(mac, "upgrade ok", 0);
    qvtk_set_download_upgrade_result(1);
    close_event_client();
    return 0;
}

} // namespace

int qvtkUpgrade_handle(const char *url, const char *md5, const char *mac, const char *version,
                       const char *strategy) {
    UpgradeTurn turn;
    if (!turn) {
        LOG("upgrade refused: the one before it was accepted");
        return UPGRADE_SUPERSEDED;
    }
    unlink(DOWNLOAD_FILE);
    delete_upgrade_log();
    log_new_version(version, strategy);
    upgrade_progress(PROGRESS_STARTED);

    int result = download_with_retries(url);
    if (result != 0) {
        report_failure(mac, PROGRESS_NOT_DOWNLOADED, "download error");
        LOG("download firmware fail");
        return result;
    }
    upgrade_progress(PROGRESS_DOWNLOADED);

    if (!same_digest(md5_of_file(DOWNLOAD_FILE).text, md5)) {
        report_failure(mac, PROGRESS_WRONG_DIGEST, "md5 error");
        LOG("MD5 check fail");
        unlink(DOWNLOAD_FILE);
        return 1;
    }
    upgrade_progress(PROGRESS_CHECKED);
    result = hand_over(mac);
    if (result == 0) turn.accepted(version, md5);
    return result;
}

void upgrade_progress(int value) {
    const auto datagram = send_event<DATAGRAM>("{\"action\": \"upgradeProgress\", \"progress\": %d}", value);
    LOG_UPGRADE("buf:%s", datagram.text);
}

void upgrade_result(const char *mac, const char *message, int result) {
    if (!mac || mac[0] == '\0') LOG("param is NULL");
    const char *name = mac ? mac : "";
    if (message)
        send_event<DATAGRAM>(
            "{\"action\": \"deviceUpgrade\", \"mac\":\"%s\", \"result\": %d, \"msg\": \"%s\"}", name, result,
            message);
    else
        send_event<DATAGRAM>("{\"action\": \"deviceUpgrade\", \"mac\":\"%s\", \"result\": %d}", name, result);
}
