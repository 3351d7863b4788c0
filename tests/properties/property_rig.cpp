// SPDX-License-Identifier: Apache-2.0
#include "properties/property_rig.h"

#include <algorithm>
#include <arpa/inet.h>
#include <stdexcept>
#include <sys/socket.h>

#include "cloud/event_client.h"
#include "cloud/global_config.h"
#include "cloud/tables.h"
#include "core/registration.h"
#include "core/text.h"

namespace {

// What a settings request for a schedule starts pauses once for each entry, after having applied it.
size_t entries_of(const std::string &name, const std::string &request) {
    JsonRoot root = parsed(request);
    json_object *member = nullptr;
    json_object_object_get_ex(root.get(), name.c_str(), &member);
    const bool is_list = json_object_is_type(member, json_type_array);
    return is_list ? std::min<size_t>(json_object_array_length(member), 64) : 0;
}

Descriptor open_relay_port() {
    Descriptor opened(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(EVENT_PORT);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(opened.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        throw std::runtime_error("the relay's port is taken");
    return opened;
}

std::vector<const property_row *> rows_where(bool (*wanted)(const property_row &)) {
    std::vector<const property_row *> found;
    for (const property_row *row = property_map; row->name != nullptr; ++row)
        if (wanted(*row)) found.push_back(row);
    return found;
}

} // namespace

PropertyRig::PropertyRig() : relay(open_relay_port()) {
    copy_text(global_config.mac, "A1:B2:C3:D4:E5:F6");
    app_waitTime = 30;
    creat_event_client();
    for (const property_row *row : rows_where([](const property_row &r) { return r.init != nullptr; }))
        row->init();
    forget();
}

PropertyRig::~PropertyRig() {
    moving_clock::on_pause({});
}

Texts PropertyRig::calls() const {
    Texts lines;
    for (const router::Call &call : router.calls())
        lines.push_back(call.object + " " + call.method + " " + compact(call.arguments));
    return lines;
}

Texts PropertyRig::writes() const {
    Texts lines = calls();
    std::erase_if(lines, [](const std::string &line) {
        const std::string method = line.substr(line.find(' ') + 1);
        return method.starts_with("get") || method.starts_with("list");
    });
    return lines;
}

Texts PropertyRig::events() {
    Texts texts;
    char datagram[EVENT_MAX + 1] = {};
    for (ssize_t n; (n = recv(relay.get(), datagram, EVENT_MAX, 0)) >= 0;) {
        datagram[n] = '\0';
        texts.push_back(std::to_string(n) + " " + datagram);
    }
    return texts;
}

void PropertyRig::forget() {
    router.clear_calls();
    recording_sdk::clear_calls();
    moving_clock::clear_pauses();
    events();
}

const property_row &row(const std::string &name) {
    for (const property_row *row = property_map; row->name != nullptr; ++row)
        if (name == row->name) return *row;
    throw std::runtime_error("no property " + name);
}

std::vector<const property_row *> rows_with_set() {
    return rows_where([](const property_row &row) { return row.set != nullptr; });
}

std::vector<const property_row *> rows_with_get() {
    return rows_where([](const property_row &row) { return row.get != nullptr; });
}

int set(const std::string &name, const std::string &request, const char *context) {
    char reply[64] = "";
    const size_t before = moving_clock::pauses().size();
    const int result = row(name).set(context, request.c_str(), reply, sizeof reply);
    const size_t entries = result == 0 ? entries_of(name, request) : 0;
    if (entries > 0 && !moving_clock::wait_for_pauses(before + entries))
        throw std::runtime_error("the schedule's entries were not applied");
    return result;
}

std::string get(const std::string &name) {
    std::string output(16384, '\0');
    const int result = row(name).get("wan0", output.data(), static_cast<int>(output.size()));
    return result == 0 ? compact(output.c_str()) : std::to_string(result);
}

Texts posts() {
    Texts texts;
    for (const recording_sdk::Call &call : recording_sdk::calls_of("TEBRA_SDK_PostProperty"))
        texts.push_back(compact(call.arguments.at(0)));
    return texts;
}

std::string compact(const std::string &json) {
    JsonRoot root = parsed(json);
    const char *text =
        json_object_to_json_string_ext(root.get(), JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE);
    return root ? text : "";
}

JsonRoot parsed(const std::string &json) {
    return JsonRoot(json_tokener_parse(json.c_str()));
}

bool same_json(const std::string &one, const std::string &other) {
    return json_object_equal(parsed(one).get(), parsed(other).get()) != 0;
}
