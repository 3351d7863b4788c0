// SPDX-License-Identifier: Apache-2.0
#include "core/storage_file.h"

#include <unistd.h>

#include "core/files.h"
#include "core/log.h"

static constexpr mode_t STORAGE_MODE = 0644; // other programs read it
static constexpr char STORAGE_DEFAULTS[] =
    "inmemoryop=0\noutmemoryop=0\nsamba=0\nhcdn_enable=1\nhcdn_open=0\nisusb=1";

int ecm_init() {
    if (access(STORAGE_FILE, F_OK) == 0) {
        LOG("file:%s is exist", STORAGE_FILE);
        LOG("file:%s is exist\n", STORAGE_FILE);
        return 0;
    }
    if (!replace_file(STORAGE_FILE, STORAGE_DEFAULTS, STORAGE_MODE)) {
        LOG("open file:%s fail", STORAGE_FILE);
        return -1;
    }
    LOG("end");
    return 0;
}
