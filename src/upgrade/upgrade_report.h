// SPDX-License-Identifier: Apache-2.0
// After the restart: what the upgrade log tells of the last upgrade, and the report of it, which the helper
// program sends.
#pragma once

// Version and strategy of the last upgrade that the upgrade log at `path` tells of. Returns a HeadResult
// (https/helper_requests.h).
int get_upgrade_info(const char *path, char *version, char *strategy, int version_size, int strategy_size);

// Body, signature and address of the report, as build_request makes them.
int post_upgradeprogress_head(char *body, char *sign, char *url, int body_size, int sign_size, int url_size);

// Reports the outcome of an upgrade that the log at `path` tells of, on a thread of its own, one at a time. 0
// when that was started or is under way, or there is no log; the code of get_upgrade_info; 100001 when there
// is no thread. Any thread.
int upgrade_result_thread(const char *path);
// The report with its retries; blocks up to some 16 minutes.
void upgrade_report_progress();
