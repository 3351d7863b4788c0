// SPDX-License-Identifier: Apache-2.0
#include "sim/router/world.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace router {
namespace {

constexpr std::size_t CALLS_KEPT = 4096;
constexpr char UPTIME[] = "/vrop.homewebinfo/uptime";

JsonRoot refusal(const std::string &reason) {
    JsonRoot reply = result("1");
    put(reply.get(), "failreason", reason);
    return reply;
}

} // namespace

std::vector<Method> all_methods() {
    std::vector<Method> rows;
    for (Methods subject :
         {identity_methods(), iptv_methods(), wifi_methods(), apclient_methods(), guest_methods(),
          wan_methods(), timer_methods(), station_methods(), filter_methods(), parental_methods(),
          rule_methods(), diagnosis_methods(), traffic_methods(), firmware_methods(), neighbour_methods(),
          hardware_methods(), simulation_methods()})
        rows.insert(rows.end(), subject.begin(), subject.end());
    return rows;
}

World::World(const std::string &patch) : methods(all_methods()), state(home_state()) {
    if (!patch.empty()) state.merge(patch);
    factory_state = json_text(state.root());
}

const Method *World::find(const std::string &object, const std::string &method) const {
    auto row = std::find_if(methods.begin(), methods.end(), [&](const Method &candidate) {
        return object == candidate.object && method == candidate.name;
    });
    return row == methods.end() ? nullptr : &*row;
}

JsonRoot World::call(const Method &row, json_object *arguments) {
    try {
        check_arguments(row.fields, arguments);
        JsonRoot reply = row.handler(*this, {row, arguments});
        if (!std::string_view(row.name).starts_with("get")) enforce_access(*this);
        return reply;
    } catch (const Refused &refused) {
        return refusal(refused.what());
    }
}

void World::record(const Call &call) {
    calls.push_back(call);
    if (calls.size() > CALLS_KEPT) calls.pop_front();
}

void World::elapse(int seconds) {
    if (state.find(UPTIME)) state.set(UPTIME, advance(state.integer(UPTIME), seconds));
    elapse_stations(*this, seconds);
    elapse_guests(*this, seconds);
    elapse_disconnections(*this, seconds);
    elapse_clock(*this, seconds);
    enforce_access(*this);
    elapse_speed_test(*this, seconds);
}

void World::restart_router(int delay_millis, const std::function<void()> &first) {
    effects.later(delay_millis, [this, first] {
        first();
        if (state.find(UPTIME)) state.set(UPTIME, 0);
        if (state.find("/vrop.ecm/mounted")) state.set("/vrop.ecm/mounted", 1);
        if (state.find("/vrop.speedtest")) state.set("/vrop.speedtest/url", std::string());
        effects.boot(state.integer("/sim/boottime"));
    });
}

void World::restore_factory_state(std::span<const char *const> kept) {
    State factory(factory_state);
    for (const char *name : kept)
        if (json_object *value = member(state.root(), name)) put(factory.root(), name, copy_json(value));
    state = std::move(factory);
}

JsonRoot result(const char *value) {
    JsonRoot reply = new_object();
    put(reply.get(), "result", std::string(value));
    return reply;
}

JsonRoot named_reply(const Request &request, JsonRoot value) {
    JsonRoot reply = new_object();
    put(reply.get(), request.row.key ? request.row.key : request.row.object, std::move(value));
    return reply;
}

JsonRoot reply_of_getby(const Request &request, JsonRoot found) {
    JsonRoot reply = new_object();
    put(reply.get(), "result", found ? 0 : 1);
    if (found) put(reply.get(), request.row.object, std::move(found));
    return reply;
}

std::string place_of(const Method &row) {
    return row.place ? row.place : std::string("/") + row.object;
}

JsonRoot show(World &world, const Request &request) {
    return named_reply(request, world.state.view(place_of(request.row)));
}

JsonRoot store(World &world, const Request &request) {
    if (json_object_object_length(request.arguments) == 0) throw Refused("no parameter");
    store_at(world, place_of(request.row), request);
    return result();
}

void store_at(World &world, const std::string &place, const Request &request) {
    for (const Field &field : request.row.fields)
        if (json_object *value = member(request.arguments, field.name); value && field.stored)
            world.state.set(place + "/" + field.name, copy_json(value));
}

std::string text_after(const World &world, const Request &request, const std::string &place,
                       const char *name) {
    json_object *value = member(request.arguments, name);
    return value ? json_object_get_string(value) : world.state.text(place + "/" + name);
}

int integer_after(const World &world, const Request &request, const std::string &place, const char *name) {
    return integer_of(request.arguments, name, world.state.integer(place + "/" + name));
}

int advance(int value, int seconds) {
    constexpr long long MOST = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(MOST, static_cast<long long>(value) + seconds));
}

int index_of(json_object *array, const char *name, int value) {
    for (std::size_t i = 0; i < length_of(array); i++)
        if (integer_of(element(array, i), name) == value) return static_cast<int>(i);
    return -1;
}

int index_of_mac(json_object *array, const std::string &mac) {
    for (std::size_t i = 0; i < length_of(array); i++)
        if (same_mac(text_of(element(array, i), "mac"), mac)) return static_cast<int>(i);
    return -1;
}

std::string place_at(const std::string &array, int index) {
    return index < 0 ? "" : array + "/" + std::to_string(index);
}

JsonRoot view_at(const World &world, const std::string &place) {
    return place.empty() ? nullptr : world.state.view(place);
}

int next_number(json_object *array, const char *name, int first) {
    int next = first;
    for (std::size_t i = 0; i < length_of(array); i++)
        next = std::max(next, advance(integer_of(element(array, i), name), 1));
    return next;
}

} // namespace router
