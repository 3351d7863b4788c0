// SPDX-License-Identifier: Apache-2.0
#include "core/wan_status.h"

#include <cstring>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"

int get_networkStatus() {
    JsonRoot root;
    json_object *wan = get_dev_info("vrop.waninfo", "get", &root);
    if (wan == nullptr) {
        LOG("get network status fail");
        return 0;
    }
    char status[32];
    copy_text(status, _json_get_str(wan, "status"));
    return strcmp(status, "Connected") == 0 ? 1 : 0;
}
