// SPDX-License-Identifier: Apache-2.0
#include "services/capture.h"

#include <climits>
#include <cstring>
#include <mutex>
#include <unistd.h>

#include "core/command.h"
#include "core/log.h"
#include "core/text.h"
#include "https/helper_program.h"
#include "relay/event_client.h"
#include "services/url_file.h"

namespace {

struct CaptureSettings {
    int time = 0; // seconds left
    char path[128] = {};
    char real_url[256] = {};
    char upload_url[512] = {};
};

constexpr char SUCCESS[] = "{\"action\": \"RemoteCapSuccess\"}";

std::mutex capture_mutex;
CaptureSettings capture;
bool is_sending;

// The path becomes part of a command line.
bool is_plain_word(const char *text) {
    static constexpr char PLAIN[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._-+,:@%=";
    return text[strspn(text, PLAIN)] == '\0';
}

// Counts down while the file waits. True when it is time to upload it; then `path` names it.
bool upload_is_due(CaptureSettings *due) {
    std::lock_guard lock(capture_mutex);
    if (capture.real_url[0] == '\0' || access(capture.path, F_OK) != 0) return false;
    *due = capture;
    if (capture.time == 0) {
        is_sending = true;
        return true;
    }
    if (capture.time > INT_MIN) capture.time--; // one below 0 never gets there
    return false;
}

// Hands the address and the file to the helper, and removes the file. While another upload is under way it is
// left for a later round, since the thread has more to do.
void send_once(const CaptureSettings &due, const char *command) {
    const UrlFile address(due.upload_url, LogSite::here(), std::try_to_lock);
    if (!address.has_turn()) return;
    const bool uploaded = address && rvxa_run_cmd_ext(command) == 0;
    unlink(due.path);
    if (uploaded) udp_send_data(SUCCESS, sizeof SUCCESS - 1);
}

} // namespace

int set_cap_config(int seconds, const char *path, const char *real_url, const char *upload_url) {
    if (path && !is_plain_word(path)) {
        LOG("path is error");
        return -1;
    }
    std::lock_guard lock(capture_mutex);
    capture.time = seconds;
    copy_text(capture.path, path);
    copy_text(capture.real_url, real_url);
    copy_text(capture.upload_url, upload_url);
    return 0;
}

int get_cap_realurl(char *address, int size) {
    if (!address || size <= 0) {
        LOG("param is NULL");
        return -1;
    }
    {
        std::lock_guard lock(capture_mutex);
        copy_text(address, static_cast<size_t>(size), capture.real_url);
    }
    LOG("real url:%s", address);
    return 0;
}

void capture_round() {
    CaptureSettings due;
    if (!upload_is_due(&due)) return;
    const Text<256> command = format_text<256>("%s %s", PUT_FILE_PROGRAM, due.path);
    if (due.upload_url[0] == '\0')
        rvxa_run_cmd_ext(command.text);
    else
        send_once(due, command.text);
    std::lock_guard lock(capture_mutex);
    is_sending = false;
}

bool capture_is_pending() {
    std::lock_guard lock(capture_mutex);
    return capture.upload_url[0] != '\0' && (is_sending || access(capture.path, F_OK) == 0);
}
