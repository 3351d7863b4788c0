// SPDX-License-Identifier: Apache-2.0
#include "devices/mac_filter.h"

#include <algorithm>
#include <cstring>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "devices/bus_replies.h"

namespace {

constexpr char FILTER[] = "vrop.firewall.filter";
constexpr int MOST_ENTRIES = 64; // deleted of one MAC

// Calls see(entry) for each entry of the MAC.
template <typename See>
void for_each_entry(const char *mac, See see) {
    JsonRoot root;
    json_object *entries = nullptr;
    JsonGetObj(get_dev_info(FILTER, "get", &root), "macfilterLists", &entries);
    const size_t count =
        json_object_is_type(entries, json_type_array) ? json_object_array_length(entries) : 0;
    for (size_t i = 0; i < count; i++) {
        json_object *entry = json_object_array_get_idx(entries, i);
        if (strcmp(_json_get_str(entry, "mac"), mac) == 0) see(entry);
    }
}

int delete_entry(int32_t index) {
    BusMessage message;
    message.text("filterType", "mac").integer("index", index).integer("platform", 0);
    return set_dev_info(FILTER, "filterDelete", message);
}

} // namespace

int get_macFilter_switch() {
    JsonRoot root;
    json_object *filter = get_dev_info(FILTER, "get", &root);
    return filter != nullptr ? _json_get_int(filter, "switch") : -1;
}

int get_macFilter_enable(const char *mac) {
    if (is_missing(mac)) return -1;
    int enable = -1;
    for_each_entry(mac, [&enable](json_object *entry) {
        enable = std::max(enable, _json_get_int(entry, "enable") != 0 ? 1 : 0);
    });
    return enable;
}

int get_macFilter_index(const char *mac, int32_t *index) {
    if (is_missing(mac)) return -1;
    int found = -1;
    for_each_entry(mac, [&found, index](json_object *entry) {
        if (found != 0) *index = _json_get_int(entry, "index");
        found = 0;
    });
    return found;
}

int start_macFilter() {
    if (get_macFilter_switch() == 1) {
        LOG("mac filter is open");
        return 0;
    }
    BusMessage message;
    message.integer("switch", 1).text("filterOp", "black");
    return set_dev_info(FILTER, "filterSet", message);
}

int add_macFilter(int32_t enable, const char *mac) {
    if (is_missing(mac)) return -1;
    BusMessage message;
    message.text("filterOp", "black").text("filterType", "mac").integer("enable", enable);
    message.integer("protocol", 0).text("mac", mac).integer("platform", 0);
    return set_dev_info(FILTER, "filterAdd", message);
}

int delete_macFilter(const char *mac) {
    if (is_missing(mac)) return -1;
    int32_t index = 0;
    if (get_macFilter_index(mac, &index) != 0) {
        LOG("not find mac:%s in the filter list", mac);
        return -1;
    }
    // a device with several entries is blocked by any of them; indexes may change with each deletion
    int result = delete_entry(index);
    for (int i = 1; result == 0 && i < MOST_ENTRIES && get_macFilter_index(mac, &index) == 0; i++)
        result = delete_entry(index);
    return result;
}
