// SPDX-License-Identifier: Apache-2.0
#include "dispatcher.h"

#include "json_text.h"

#include <cstring>
#include <memory>
#include <new>
#include <optional>

namespace {

constexpr size_t MAX_PAYLOAD_BYTES = 256 * 1024;
constexpr size_t DOCUMENT_BYTES = 512 * 1024;
constexpr size_t REPLY_BYTES = 1024;

struct Offer {
    std::string url;
    std::string md5;
    std::string version;
    std::string strategy;
};

// A text, or a number as text; nothing for a member of another type. A missing one is empty unless it is
// required.
bool read_member(const JsonRoot &root, const char *key, bool required, std::string *text) {
    json_object *member = nullptr;
    if (!json_object_object_get_ex(root.get(), key, &member)) return !required;
    bool good = json_object_is_type(member, json_type_string) ||
                (!required && json_object_is_type(member, json_type_int));
    if (good) *text = json_object_get_string(member);
    return good;
}

std::optional<Offer> read_offer(const std::string &payload) {
    JsonRoot root = parse_json(payload);
    if (!json_object_is_type(root.get(), json_type_object)) return std::nullopt;
    Offer offer;
    bool good = read_member(root, "url", true, &offer.url) && read_member(root, "md5", true, &offer.md5) &&
                read_member(root, "version", false, &offer.version) &&
                read_member(root, "strategy", false, &offer.strategy);
    return good ? std::optional(offer) : std::nullopt;
}

} // namespace

Dispatcher::Request Dispatcher::read_topic(const std::string &topic) {
    constexpr std::string_view PROPERTY = "property/", SERVICE = "service/", GET = "/get", SET = "/set";
    auto between = [&](std::string_view before, std::string_view after) {
        return topic.substr(before.size(), topic.size() - before.size() - after.size());
    };
    if (topic == "upgrade") return {.kind = Kind::upgrade};
    if (topic.starts_with(SERVICE)) return {.kind = Kind::service, .name = between(SERVICE, "")};
    if (!topic.starts_with(PROPERTY) || topic.size() < PROPERTY.size() + GET.size()) return {};
    if (topic.ends_with(GET)) return {.kind = Kind::get, .name = between(PROPERTY, GET)};
    if (topic.ends_with(SET)) return {.kind = Kind::set, .name = between(PROPERTY, SET)};
    return {};
}

WorkerPool &Dispatcher::pool_for(Kind kind) {
    if (kind == Kind::service) return services_;
    return kind == Kind::upgrade ? upgrades_ : properties_;
}

void Dispatcher::refuse(const Request &request, int service_code, const char *message) {
    bool service = request.kind == Kind::service;
    link_.answer(request.reply, service ? service_refusal(service_code, message) : refusal(REFUSED, message));
}

void Dispatcher::submit(const std::string &topic, std::string payload, ReplyTo reply) {
    Request request = read_topic(topic);
    if (request.kind == Kind::none) return;
    request.payload = std::move(payload);
    request.reply = std::move(reply);
    if (request.payload.size() > MAX_PAYLOAD_BYTES)
        return refuse(request, SERVICE_MALFORMED, "the request is too large");
    if (request.payload.find('\0') != std::string::npos)
        return refuse(request, SERVICE_MALFORMED, "the request is not a text");
    if (!pool_for(request.kind).push([this, request] { serve(request); }))
        refuse(request, SERVICE_BUSY, "the device is busy");
}

void Dispatcher::serve(const Request &request) {
    switch (request.kind) {
    case Kind::get:
        return serve_get(request);
    case Kind::set:
        return serve_set(request);
    case Kind::service:
        return serve_call(request);
    case Kind::upgrade:
        return serve_upgrade(request);
    case Kind::none:
        return;
    }
}

void Dispatcher::serve_get(const Request &request) {
    const property_row *row = find_property(record_, request.name);
    if (!row) return refuse(request, SERVICE_UNKNOWN, "there is no such property");
    if (!row->get) return refuse(request, SERVICE_UNKNOWN, "the property cannot be read");
    const std::unique_ptr<char[]> document(new (std::nothrow) char[DOCUMENT_BYTES]); // costs what is written
    if (!document) return refuse(request, SERVICE_BUSY, "the device is out of memory");
    document[0] = document[DOCUMENT_BYTES - 1] = 0;
    const int code = row->get(row->name, document.get(), DOCUMENT_BYTES);
    if (code != 0) return link_.answer(request.reply, refusal(code, "the device cannot read it"));
    if (strnlen(document.get(), DOCUMENT_BYTES) >= DOCUMENT_BYTES - 1) // cut, or without its end
        return refuse(request, SERVICE_BUSY, "the document is too large");
    link_.answer(request.reply, {0, document.get()});
}

void Dispatcher::serve_set(const Request &request) {
    const property_row *row = find_property(record_, request.name);
    if (!row) return refuse(request, SERVICE_UNKNOWN, "there is no such property");
    if (!row->set) return refuse(request, SERVICE_UNKNOWN, "the property cannot be written");
    char reply[REPLY_BYTES] = "";
    int code = row->set(row->name, request.payload.c_str(), reply, sizeof reply);
    reply[sizeof reply - 1] = 0;
    link_.answer(request.reply, set_answer(code, reply));
}

void Dispatcher::serve_call(const Request &request) {
    const service_row *row = find_service(record_, request.name);
    if (!row) return refuse(request, SERVICE_UNKNOWN, "there is no such service");
    if (!row->handler) return refuse(request, SERVICE_UNKNOWN, "the service is not served");
    std::optional<Calls::Id> id = calls_.open(request.reply);
    if (!id) return refuse(request, SERVICE_BUSY, "too many calls are open");
    housekeeper_.call_opened();
    row->handler(id->handle, id->request, nullptr, nullptr,
                 request.payload.empty() ? nullptr : request.payload.c_str());
}

void Dispatcher::serve_upgrade(const Request &request) {
    std::optional<Offer> offer = read_offer(request.payload);
    if (!offer) return refuse(request, SERVICE_MALFORMED, "the offer needs the texts url and md5");
    if (!record_.upgrade) return refuse(request, SERVICE_UNKNOWN, "the device takes no upgrade");
    int code = record_.upgrade(nullptr, nullptr, nullptr, offer->url.c_str(), offer->md5.c_str(),
                               offer->version.c_str(), offer->strategy.c_str());
    link_.answer(request.reply, plain_answer(code));
}
