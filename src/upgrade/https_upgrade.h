// SPDX-License-Identifier: Apache-2.0
// Firmware upgrade over HTTPS: the agent asks the device-management server for a new image, loads and checks
// it, hands it to the router, and reports each outcome; after the restart it reports which version runs.
#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>

#include "core/text.h"

inline constexpr char IMAGE_FILE[] = "/aptmp/firmware.img";       // written and checked here
inline constexpr char IMAGE_INSTALL_FILE[] = "/tmp/firmware.img"; // the same file, as the flasher names it

// Starts the upgrade thread, once the SDK has started. 0, or -1 when it cannot be made.
int http_upgrade_thread_start();

// Seconds between two checks.
extern std::atomic<int64_t> g_request_interval;
// Sets it, unbounded: 0 or less checks every second. Any thread.
void set_http_upgrade_check_interval(long seconds);

// What the upgrade thread does before its loop: default interval, identity and addresses from the
// router. Returns the time of the "last check", so that the first round checks at once.
time_t http_upgrade_start();
// One round of its loop, without the second's pause: a check when one is due, and the upgrade that it found,
// unless the router has accepted the same one within the last ten minutes.
void http_upgrade_round(time_t *last_check);

// The steps, of the upgrade thread.
// Loads the address into IMAGE_FILE. The libcurl code; 1 when nothing could be started.
int curl_download_file(const char *address);
int query_upgrade();   // the reply's "code" (0: the request context holds the answer), a libcurl code, or -1
void http_upgrading(); // in its turn, loads, checks and hands over the image that the request context names
void report_upgrade_progress(int progress, const char *reason);
Text<33> get_file_md5(const char *path); // 32 lower-case hex digits, empty when the file cannot be read
