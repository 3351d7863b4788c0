// SPDX-License-Identifier: Apache-2.0
// Puts a backup document back into the router. What a document does not give is not written: the router keeps
// its own.
#pragma once

#include <atomic>
#include <cstdint>

#include "services/backup_document.h"

// Where the document waits for its restore.
inline constexpr char BACKUP_FILE[] = "/tmp/backup.config";

// Applies the document in BACKUP_FILE, of which the first 2048 bytes are read. The result of its Internet
// settings, 0 when it gives none; -1 when the file cannot be read or holds no JSON object. Blocks for more
// than ten seconds. Any thread, one at a time: the file and the sections of a restore belong together.
int tunningBackupCfg_set();

// Applies a record section by section, Wi-Fi first, and logs how each went; one that fails does not keep the
// next from being applied. The result of the Internet settings.
int set_tunningBackupCfg_config(const BackupRecord &record);

// The radio of the relay restored last, -1 before the first.
extern std::atomic<int32_t> backup_relay_radio;
