// SPDX-License-Identifier: Apache-2.0
// Firmware upgrade offered through the SDK: download, MD5 check, hand-over, with progress and outcome as
// local events.
#pragma once

// Runs the whole upgrade on the calling (SDK) thread, which it blocks, in its turn (upgrade_turn.h). 0 when
// flashing was accepted, its result when refused, 1 on a digest mismatch. After three failed downloads the
// last one's result: a libcurl code, or 1 when there was no address or the file could not be made.
// UPGRADE_SUPERSEDED, with nothing touched or reported, when the upgrade that it waited for was accepted.
int qvtkUpgrade_handle(const char *url, const char *md5, const char *mac, const char *version,
                       const char *strategy);

inline constexpr int UPGRADE_SUPERSEDED = -2;

// Sends progress (10 started, 60 downloaded, 80 checked, 100 accepted, below 0 failed) to the relay.
void upgrade_progress(int value);
// Sends the outcome (0 good, 1 bad) to the relay; `message` may be null.
void upgrade_result(const char *mac, const char *message, int result);
