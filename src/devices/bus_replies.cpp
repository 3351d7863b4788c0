// SPDX-License-Identifier: Apache-2.0
#include "devices/bus_replies.h"

#include <algorithm>
#include <cstring>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "devices/runtime_file.h"

json_object *BusReplies::whole(const char *object, const char *method) const {
    for (const Reply &known : lists_)
        if (strcmp(known.object, object) == 0 && strcmp(known.method, method) == 0) return known.member;
    JsonRoot root;
    json_object *member = get_dev_info(object, method, &root);
    lists_.push_back({object, method, std::move(root), member});
    return member;
}

json_object *BusReplies::of_device(const char *object, const char *mac) const {
    auto known = std::find_if(of_devices_.begin(), of_devices_.end(), [object](const DeviceReply &reply) {
        return strcmp(reply.object, object) == 0;
    });
    if (known == of_devices_.end())
        known = of_devices_.insert(known, {object, "", nullptr, nullptr});
    else if (known->mac == mac)
        return known->member;
    BusMessage message;
    message.text("mac", mac);
    known->mac = mac;
    known->member = get_param_dev_info(object, "getbymac", message, &known->root);
    return known->member;
}

json_object *BusReplies::runtimes() const {
    if (!runtimes_read_) {
        bool open_failed = false;
        runtimes_ = read_runtime_array(RUNTIME_FILE, &open_failed);
        runtimes_read_ = true;
        if (open_failed) LOG("open file:%s fail", RUNTIME_FILE);
    }
    return runtimes_.get();
}

bool is_missing(const char *text, LogSite site) {
    if (text != nullptr && text[0] != '\0') return false;
    LOG_AT(site, "param is NULL");
    return true;
}

json_object *element_of_mac(json_object *array, const char *mac) {
    if (!json_object_is_type(array, json_type_array)) return nullptr;
    for (size_t i = 0; i < json_object_array_length(array); i++) {
        json_object *element = json_object_array_get_idx(array, i);
        const char *own = JsonGetStr(element, "mac");
        if (own && strcmp(own, mac) == 0) return element;
    }
    return nullptr;
}
