// SPDX-License-Identifier: Apache-2.0
#include "devices/online_notice.h"

#include "core/json_path.h"
#include "core/log.h"
#include "devices/runtime_file.h"

namespace {

constexpr int ANNOUNCE = 1;

int notice_of(json_object *entry) {
    json_object *notice = nullptr;
    return JsonGetObj(entry, "onlineNotice", &notice) ? json_object_get_int(notice) : ANNOUNCE;
}

} // namespace

int get_device_inform(const char *mac, const BusReplies &replies) {
    if (!mac || mac[0] == '\0') {
        LOG("param is NULL");
        return -1;
    }
    json_object *list = replies.runtimes();
    const size_t count = list ? json_object_array_length(list) : 0;
    for (size_t i = 0; i < count; i++) {
        json_object *entry = json_object_array_get_idx(list, i);
        if (is_entry_of(entry, mac)) return notice_of(entry);
    }
    return ANNOUNCE;
}
