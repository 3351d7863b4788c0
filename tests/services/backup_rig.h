// SPDX-License-Identifier: Apache-2.0
// A simulated router with what backups and restores leave behind. For one test case in its own sandbox.
#pragma once

#include <fstream>

#include "services/backup_read.h"
#include "services/restore.h"
#include "support/router_rig.h"
#include "support/text_file.h"

struct BackupRig : RouterRig {
    explicit BackupRig(const std::string &patch = {}) : RouterRig(patch) {}

    static std::string backup() {
        std::string text(BACKUP_DOCUMENT_SIZE, '\0');
        text.resize(tunningBackupCfg_get(text.data(), BACKUP_DOCUMENT_SIZE) == 0 ? strlen(text.c_str()) : 0);
        return text;
    }
    // The restore's result; only its calls and log lines are kept.
    int restore(const std::string &document) {
        std::ofstream(BACKUP_FILE) << document;
        router.clear_calls();
        clear_main_log();
        return tunningBackupCfg_set();
    }
    // What was written since, as "object arguments".
    std::vector<std::string> writes() const {
        std::vector<std::string> lines;
        for (const router::Call &call : router.calls("*", "set*"))
            lines.push_back(call.object.substr(5) + " " + call.arguments);
        return lines;
    }
};
