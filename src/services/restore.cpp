// SPDX-License-Identifier: Apache-2.0
#include "services/restore.h"

#include <string>

#include "core/clock.h"
#include "core/files.h"
#include "core/handles.h"
#include "core/log.h"
#include "services/restore_sections.h"

namespace {

constexpr unsigned SETTLE_SECONDS = 5;

// The file's document; null after having logged why.
JsonRoot read_document() {
    std::string text;
    if (!read_own_file(BACKUP_FILE, BACKUP_DOCUMENT_SIZE, &text)) {
        LOG("open file fail");
        return nullptr;
    }
    if (text.empty()) {
        LOG("file have not data");
        return nullptr;
    }
    // Wi-Fi names are any bytes, and go back to the daemon as they came from it.
    JsonRoot document(json_tokener_parse(text.c_str()));
    if (!json_object_is_type(document.get(), json_type_object)) {
        LOG("cJSON Parse fail");
        return nullptr;
    }
    return document;
}

} // namespace

std::atomic<int32_t> backup_relay_radio{-1};

int set_tunningBackupCfg_config(const BackupRecord &record) {
    LOG("%s", restore_wifi(record.wifi) == 0 ? "set wifi config ok" : "set wifi config fail");
    pause_seconds(SETTLE_SECONDS);
    if (record.iptv.count != -1)
        LOG("%s", restore_iptv(record.iptv) == 0 ? "set iptv config ok" : "set iptv config fail");
    if (record.mesh.enable != -1) {
        LOG("%s", restore_mesh(record.mesh) == 0 ? "set mesh config ok" : "set mesh config fail");
        pause_seconds(SETTLE_SECONDS);
    }
    LOG("%s", restore_account(record.account) == 0 ? "set web passwd ok" : "set web passwd fail");
    if (record.internet.router_mode == -1) return 0;
    const int result = restore_internet(record.internet);
    LOG("%s", result == 0 ? "set internet config ok" : "set internet config fail");
    return result;
}

int tunningBackupCfg_set() {
    LOG("------------->start enter tunningBackupCfg set<--------------");
    const JsonRoot document = read_document();
    if (!document) return -1;
    BackupRecord record;
    read_backup_document(document.get(), &record);
    const int result = set_tunningBackupCfg_config(record);
    if (result != 0) LOG("set backup config fail");
    return result;
}
