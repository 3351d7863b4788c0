// SPDX-License-Identifier: Apache-2.0
#include "properties/property_rig.h"

#include <algorithm>
#include <stdexcept>

#include "core/global_config.h"
#include "core/registration.h"
#include "core/text.h"
#include "properties/schedule.h"
#include "sim/router/json.h"

PropertyRig::PropertyRig(const std::string &patch) : RouterRig(patch) {
    copy_text(global_config.mac, "A1:B2:C3:D4:E5:F6");
    app_waitTime = 30;
    for (const property_row *row : rows_with(&property_row::init))
        row->init();
    forget();
}

PropertyRig::~PropertyRig() {
    moving_clock::on_pause({});
}

Texts PropertyRig::take() {
    Texts texts = calls();
    router.clear_calls();
    const Texts events = relay.take();
    texts.insert(texts.end(), events.begin(), events.end());
    return texts;
}

void PropertyRig::forget() {
    take();
    recording_sdk::clear_calls();
    moving_clock::clear_pauses();
    clear_main_log();
}

const property_row &row(const std::string &name) {
    for (const property_row *row : rows_with(&property_row::name))
        if (name == row->name) return *row;
    throw std::runtime_error("no property " + name);
}

int set(const std::string &name, const std::string &request, const char *context) {
    char reply[64] = "";
    const size_t before = moving_clock::pauses().size();
    const int result = row(name).set(context, request.c_str(), reply, sizeof reply);
    // a thread applies the entries of a schedule and pauses after each
    const JsonRoot root(json_tokener_parse(request.c_str()));
    json_object *list = nullptr;
    json_object_object_get_ex(root.get(), name.c_str(), &list);
    if (result == 0 && name.starts_with("time") && json_object_is_type(list, json_type_array))
        moving_clock::wait_for_pauses(before +
                                      std::min<size_t>(json_object_array_length(list), SCHEDULE_ENTRIES));
    return result;
}

std::string get(const std::string &name) {
    std::string output(16384, '\0');
    const int result = row(name).get("wan0", output.data(), static_cast<int>(output.size()));
    return result == 0 ? compact(output.c_str()) : std::to_string(result);
}

std::string compact(const std::string &json) {
    return router::json_text(router::parse_json(json).get());
}
