// SPDX-License-Identifier: Apache-2.0
// The access functions of core/bus: what they check in a request and take from a reply.
#include <cstdio>
#include <cstdlib>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"

namespace {

JsonRoot call_locked(const char *object, const char *method, blob_attr *message) {
    std::lock_guard lock(ubus_mutex);
    return JsonRoot(_ubus_call(object, method, message));
}

// Hands the reply over to the caller when it has what was asked for.
json_object *keep_if(json_object *found, JsonRoot reply, JsonRoot *root) {
    if (found != nullptr) *root = std::move(reply);
    return found;
}

json_object *take_member(JsonRoot reply, const char *name, JsonRoot *root) {
    json_object *member = nullptr;
    json_object_object_get_ex(reply.get(), name, &member);
    return keep_if(member, std::move(reply), root);
}

int set_with(const char *object, const char *method, blob_attr *message) {
    std::lock_guard lock(ubus_mutex);
    JsonRoot reply(_ubus_call(object, method, message));
    return reply ? result_to_ret(_json_get_str(reply.get(), "result")) : -1;
}

} // namespace

json_object *get_dev_info(const char *object, const char *method, JsonRoot *root) {
    if (object == nullptr || method == nullptr || root == nullptr) {
        printf("%s %d param is NULL\n", __func__, __LINE__);
        return nullptr;
    }
    JsonRoot reply = call_locked(object, method, nullptr);
    if (!reply) {
        LOG("devinfo is NULL");
        return nullptr;
    }
    return take_member(std::move(reply), object, root);
}

json_object *get_param_dev_info(const char *object, const char *method, const BusMessage &message,
                                JsonRoot *root) {
    if (object == nullptr || method == nullptr || root == nullptr) {
        printf("%s %d param is NULL\n", __func__, __LINE__);
        return nullptr;
    }
    // without memory for its arguments the call would ask for something else
    JsonRoot reply = message.head() == nullptr ? nullptr : call_locked(object, method, message.head());
    if (!reply) {
        LOG("devinfo is NULL");
        return nullptr;
    }
    if (result_to_ret(_json_get_str(reply.get(), "result")) != 0) {
        LOG("device is not exist in the ubus obj");
        return nullptr;
    }
    return take_member(std::move(reply), object, root);
}

json_object *get_dev_specInfo(const char *object, const char *method, const char *member, JsonRoot *root) {
    if (object == nullptr || method == nullptr || member == nullptr || root == nullptr) {
        LOG("param is NULL");
        return nullptr;
    }
    JsonRoot reply = call_locked(object, method, nullptr);
    if (!reply) {
        LOG("devinfo is NULL");
        return nullptr;
    }
    return take_member(std::move(reply), member, root);
}

json_object *get_one_array_info(const char *object, const char *method, int index, JsonRoot *root) {
    if (object == nullptr || method == nullptr || root == nullptr) {
        printf("%s %d param is NULL\n", __func__, __LINE__);
        return nullptr;
    }
    JsonRoot reply = call_locked(object, method, nullptr);
    if (!reply) {
        printf("%s %d devinfo is NULL\n", __func__, __LINE__);
        return nullptr;
    }
    json_object *list = nullptr;
    json_object_object_get_ex(reply.get(), object, &list);
    if (!json_object_is_type(list, json_type_array) || index < 0) return nullptr;
    return keep_if(json_object_array_get_idx(list, static_cast<size_t>(index)), std::move(reply), root);
}

int set_dev_info(const char *object, const char *method, const BusMessage &message) {
    if (object == nullptr || method == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    // without memory for its arguments the call would set something else
    return message.head() == nullptr ? -1 : set_with(object, method, message.head());
}

int set_dev_info(const char *object, const char *method) {
    if (object == nullptr || method == nullptr) {
        LOG("param is NULL");
        return -1;
    }
    return set_with(object, method, nullptr);
}

int set_or_log(const char *object, const char *method, const BusMessage &message, const char *refused,
               LogSite site) {
    const int result = set_dev_info(object, method, message);
    if (result != 0) LOG_AT(site, "%s", refused);
    return result;
}

int result_to_ret(const char *result) {
    return result == nullptr || strtol(result, nullptr, 10) != 0 ? -1 : 0;
}
